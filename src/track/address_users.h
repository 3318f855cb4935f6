#pragma once

#include <vector>

#include "core/address.h"

namespace zemblar {

class Decoder;
class Object;
class PointOutput;

/// The other locomotives that a command for the decoder reaches as well: with the same address at
/// the same device, or one of the two at the layout's default device. A locomotive may have several
/// decoders at one address.
[[nodiscard]] std::vector<Object*> others_at(const Decoder& decoder);
/// The points and signals with another output of the same type, address and number there; the
/// output's own too, when it has two.
[[nodiscard]] std::vector<Object*> others_at(const PointOutput& output);

/// The next higher address of the kind that nobody else has there; after the last one the search
/// goes on at 1. The present one when all are taken.
[[nodiscard]] Address next_free(const Decoder& decoder);
/// The same, for the output's number.
[[nodiscard]] Address next_free(const PointOutput& output);

}  // namespace zemblar

#pragma once

#include <vector>

#include "core/address.h"

namespace zemblar {

class Decoder;
class Object;
class PointOutput;

/// The other locomotives that also obey a command for this decoder: they have the same address on
/// the same device, or one of the two decoders uses the layout's default device. Other decoders of
/// the same locomotive do not count.
[[nodiscard]] std::vector<Object*> others_at(const Decoder& decoder);
/// The points and signals that have another output with the same type, address and number on the
/// same device. This includes the output's own point if it has two such outputs.
[[nodiscard]] std::vector<Object*> others_at(const PointOutput& output);

/// The next higher address of the same kind that no other locomotive has on that device; after the
/// highest address the search continues at 1. Returns the present address when all are taken.
[[nodiscard]] Address next_free(const Decoder& decoder);
/// The same, for the output's number.
[[nodiscard]] Address next_free(const PointOutput& output);

}  // namespace zemblar

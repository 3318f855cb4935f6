#pragma once

#include <string>
#include <string_view>

#include "core/address.h"
#include "core/direction.h"

/// The commands to an ECoS station, without the line feed that ends each. Pure.
namespace zemblar::ecos {

inline constexpr unsigned station = 1;              ///< object of track power
inline constexpr unsigned locomotive_manager = 10;  ///< object that lists and makes locomotives
inline constexpr unsigned switching_manager = 11;   ///< object of accessories
inline constexpr unsigned unknown_object = 15;      ///< the status of an answer about no object

/// Requests the events of an object.
[[nodiscard]] std::string request_view(unsigned object);
[[nodiscard]] std::string get_status();
/// Track power.
[[nodiscard]] std::string go();
[[nodiscard]] std::string stop();

/// Lists all locomotives with their addresses.
[[nodiscard]] std::string query_locomotives();
[[nodiscard]] std::string create_locomotive(Address address, std::string_view name);

/// Takes control of a locomotive, also from another client.
[[nodiscard]] std::string request_control(unsigned locomotive);
[[nodiscard]] std::string release_control(unsigned locomotive);
/// 0 to 126, or DecoderUpdate::emergency_stop.
[[nodiscard]] std::string set_speed(unsigned locomotive, unsigned speed);
[[nodiscard]] std::string set_direction(unsigned locomotive, Direction direction);
[[nodiscard]] std::string set_function(unsigned locomotive, unsigned fn, bool on);

/// Switches one of the four outputs of an accessory decoder; `address` counts from 1.
[[nodiscard]] std::string switch_output(unsigned address, unsigned output, bool on);

/// The text between double quotes, with double quotes inside doubled.
[[nodiscard]] std::string quoted(std::string_view text);

}  // namespace zemblar::ecos

#pragma once

#include <string>
#include <vector>

#include "simulator/stations/ecos_model.h"

/// The options of the station's objects: how they are read from a command and written in a body.
namespace zemblar::simulator {

/// The error of a command, which becomes the status of the reply.
struct EcosRefusal {
  EcosStatus status;
  std::string detail;  ///< added to the end line; may be empty
};

[[noreturn]] void refuse_option(const EcosOption& option);
[[noreturn]] void refuse_parameter(const std::string& option_name);

/// Sets an option of a locomotive: speed, dir, func, stop, addr, name or protocol. Throws
/// EcosRefusal.
void apply(const EcosOption& option, EcosLocomotive& locomotive);

/// Sets an option that describes a locomotive: addr, name or protocol. Throws EcosRefusal.
void describe(const EcosOption& option, EcosLocomotive& locomotive);

/// The value of an option as it stands in a body, as "func[2,1]". Throws EcosRefusal.
[[nodiscard]] std::string attribute(const EcosLocomotive& locomotive, const EcosOption& option);

/// All options whose values differ, with the values of `after`.
[[nodiscard]] std::vector<std::string> changed_attributes(const EcosLocomotive& before,
                                                          const EcosLocomotive& after);

/// The lines, without the object, that answer an option of the station. Throws EcosRefusal.
[[nodiscard]] std::vector<std::string> station_attribute(bool power, const EcosOption& option);

}  // namespace zemblar::simulator

#pragma once

#include <string>
#include <vector>

#include "simulator/stations/ecos_model.h"

/// The options of the station's objects: how they are read from a command and written in a body.
namespace zemblar::simulator {

/// Thrown while a command is carried out, ends in the reply.
struct EcosRefusal {
  EcosStatus status;
  std::string detail;  ///< more words for the end line, may be empty
};

[[noreturn]] void refuse_option(const EcosOption& option);
[[noreturn]] void refuse_parameter(const std::string& option_name);

/// Sets what drives a locomotive or describes it: speed, dir, func, stop, addr, name, protocol.
/// Throws EcosRefusal.
void apply(const EcosOption& option, EcosLocomotive& locomotive);

/// The same for what describes a locomotive alone: addr, name, protocol. Throws EcosRefusal.
void describe(const EcosOption& option, EcosLocomotive& locomotive);

/// The value of an option as it stands in a body, as "func[2,1]". Throws EcosRefusal.
[[nodiscard]] std::string attribute(const EcosLocomotive& locomotive, const EcosOption& option);

/// All options whose values differ, with the values of `after`.
[[nodiscard]] std::vector<std::string> changed_attributes(const EcosLocomotive& before,
                                                          const EcosLocomotive& after);

/// The lines, without the object, that answer an option of the station. Throws EcosRefusal.
[[nodiscard]] std::vector<std::string> station_attribute(bool power, const EcosOption& option);

}  // namespace zemblar::simulator

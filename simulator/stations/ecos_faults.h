#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/stations/ecos_protocol.h"

namespace zemblar::simulator {

/// The faults of the station. Changes take effect with the next command. A command hit by a fault
/// is not carried out, so that both its effect and its answer are missing.
class EcosFaults {
 public:
  /// What happens to a command instead of being carried out.
  enum class Effect { fail, silence, drop };

  /// One rule; the first that fits a command decides.
  struct Rule {
    Effect effect = Effect::fail;
    std::string prefix;             ///< of the command lines it is for, empty for all
    unsigned skip = 0;              ///< number of matching commands that pass first
    std::optional<unsigned> times;  ///< number of commands hit after that; all without a value
    unsigned status = 0;            ///< of the reply, for Effect::fail
  };

  std::chrono::milliseconds late{0};  ///< before each message
  std::size_t pieces = 0;             ///< bytes written at a time, 0 for a whole message
  std::chrono::milliseconds gap{2};   ///< between pieces
  std::string garbage;                ///< bytes before each message
  bool refuse_control = false;        ///< each request for control is answered "no control"

  /// Answers commands that begin with `prefix` with an error status.
  void fail(std::string prefix, unsigned status, std::optional<unsigned> times = {});
  /// Never answers commands that begin with `prefix`.
  void silence(std::string prefix = "", std::optional<unsigned> times = {});
  /// Answers `commands` more commands and drops the connection on the one that follows.
  void drop_after(unsigned commands, std::string prefix = "");
  void add(Rule rule) { rules_.push_back(std::move(rule)); }

  /// Ends all faults.
  void clear() { *this = EcosFaults(); }

  /// The rule that hits this command, if any. Counts the command, so call it once per command.
  [[nodiscard]] std::optional<Rule> hit(std::string_view line);

 private:
  std::vector<Rule> rules_;
};

}  // namespace zemblar::simulator

#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/stations/ecos_protocol.h"

namespace zemblar::simulator {

/// How the station misbehaves. Changes count from the next command on. The commands that a fault
/// hits are not carried out, so that their effect is missing as well as their answer.
class EcosFaults {
 public:
  /// What happens to a command instead of being carried out.
  enum class Effect { fail, silence, drop };

  /// One rule; the first that fits a command decides.
  struct Rule {
    Effect effect = Effect::fail;
    std::string prefix;             ///< of the command lines it is for, empty for all
    unsigned skip = 0;              ///< so many of these pass first
    std::optional<unsigned> times;  ///< so many are hit then, without a value all
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

  /// Behaves well from now on.
  void clear() { *this = EcosFaults(); }

  /// The rule that hits this command, if any. Counts the command, so ask once for each.
  [[nodiscard]] std::optional<Rule> hit(std::string_view line);

 private:
  std::vector<Rule> rules_;
};

}  // namespace zemblar::simulator

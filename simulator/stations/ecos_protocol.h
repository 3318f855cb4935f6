#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// The ECoS text protocol from the station's side: values for commands, text for answers. Pure.
///
/// Standard (the protocol that ESU publishes for its station):
///   command   `verb(object, option, option[argument, ...], ...)`, one on a line
///   reply     `<REPLY command>`, body lines, `<END status (text)>`, lines ended by CR LF
///   event     `<EVENT object>`, body lines, `<END 0 (OK)>`
///   body line `object option[argument, ...] ...`; texts in double quotes, a quote in them doubled
namespace zemblar::simulator {

/// The number in an end line. 0, 11, 15 and 25 are the station's own; the numbers of the other
/// failures are guessed, a client should only tell 0 from the rest.
enum class EcosStatus : unsigned {
  ok = 0,
  unknown_command = 10,
  unknown_option = 11,
  bad_parameter = 12,
  syntax_error = 13,
  unknown_object = 15,
  no_control = 25,
};

/// One option of a command: `func[2,1]` has the name "func" and the arguments "2" and "1".
/// Quoted arguments are held without their quotes.
struct EcosOption {
  std::string name;
  std::vector<std::string> args;

  bool operator==(const EcosOption&) const = default;
};

/// One command line as a value.
struct EcosCommand {
  std::string verb;
  unsigned object = 0;
  std::vector<EcosOption> options;

  /// The first option with this name, or null.
  [[nodiscard]] const EcosOption* find(std::string_view name) const;

  bool operator==(const EcosCommand&) const = default;
};

/// The reason why a line is no command, and the position of the error in it.
struct EcosSyntaxError {
  std::string reason;
  std::size_t position = 0;
};

/// Reads one line without its line end. Blanks between the elements are allowed.
[[nodiscard]] std::variant<EcosCommand, EcosSyntaxError> parse_command(std::string_view line);

/// The number in decimal digits, whatever the locale.
[[nodiscard]] std::string decimal(unsigned value);

/// The decimal number that is the whole of `digits`, or nothing.
[[nodiscard]] std::optional<unsigned> parse_decimal(std::string_view digits);

/// The text in double quotes, quotes in it doubled. Control characters, which would break the
/// line, become blanks.
[[nodiscard]] std::string quoted(std::string_view text);

/// The text of the end line for a status that needs no more words.
[[nodiscard]] std::string_view status_text(EcosStatus status);

/// A whole reply. `command` is echoed as it came; `body` lines carry no line ends.
[[nodiscard]] std::string format_reply(std::string_view command,
                                       const std::vector<std::string>& body, unsigned status,
                                       std::string_view text);

/// A whole event about `object`.
[[nodiscard]] std::string format_event(unsigned object, const std::vector<std::string>& body);

}  // namespace zemblar::simulator

#include "simulator/stations/ecos_protocol.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace zemblar::simulator {
namespace {

// The station's characters are ASCII; <cctype> would ask the user's locale.
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool is_word(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '-';
}
bool is_blank(char c) {
  return c == ' ' || c == '\t';
}
bool is_control(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

class CommandParser {
 public:
  explicit CommandParser(std::string_view line) : line_(line) {}

  EcosCommand command() {
    EcosCommand command;
    command.verb = word("command expected");
    expect('(');
    command.object = object();
    while (accept(',')) command.options.push_back(option());
    expect(')');
    skip_blanks();
    if (at_ < line_.size()) fail("text after the closing bracket");
    return command;
  }

 private:
  [[noreturn]] void fail(std::string reason) const {
    throw EcosSyntaxError{std::move(reason), at_};
  }

  char peek() const { return at_ < line_.size() ? line_[at_] : '\0'; }

  void skip_blanks() {
    while (is_blank(peek())) ++at_;
  }

  bool accept(char wanted) {
    skip_blanks();
    if (peek() != wanted) return false;
    ++at_;
    return true;
  }

  void expect(char wanted) {
    if (!accept(wanted)) fail(wanted == '(' ? "bracket expected" : "closing bracket expected");
  }

  std::string word(const char* complaint) {
    skip_blanks();
    const auto start = at_;
    while (is_word(peek())) ++at_;
    if (at_ == start) fail(complaint);
    return std::string(line_.substr(start, at_ - start));
  }

  unsigned object() {
    const auto number = parse_decimal(word("object expected"));
    if (!number) fail("object is not a number");
    return *number;
  }

  EcosOption option() {
    EcosOption option{word("option expected"), {}};
    if (!accept('[')) return option;
    do option.args.push_back(argument());
    while (accept(','));
    expect(']');
    return option;
  }

  std::string argument() {
    if (accept('"')) return quoted_argument();
    const auto start = at_;
    while (at_ < line_.size() && line_.find_first_of(",]\"", at_) != at_) ++at_;
    return std::string(line_.substr(start, at_ - start));
  }

  std::string quoted_argument() {
    std::string text;
    while (at_ < line_.size()) {
      const char c = line_[at_++];
      if (c == '"' && peek() != '"') return text;
      if (c == '"') ++at_;
      text += c;
    }
    fail("closing quote missing");
  }

  std::string_view line_;
  std::size_t at_ = 0;
};

std::string format(std::string head, const std::vector<std::string>& body, unsigned status,
                   std::string_view text) {
  constexpr auto line_end = "\r\n";
  std::string message = std::move(head) + line_end;
  for (const auto& line : body) message += line + line_end;
  message += "<END " + decimal(status) + " (";
  message.append(text).append(")>").append(line_end);
  return message;
}

}  // namespace

const EcosOption* EcosCommand::find(std::string_view name) const {
  const auto found = std::find_if(options.begin(), options.end(),
                                  [&](const EcosOption& option) { return option.name == name; });
  return found == options.end() ? nullptr : &*found;
}

std::variant<EcosCommand, EcosSyntaxError> parse_command(std::string_view line) {
  try {
    return CommandParser(line).command();
  } catch (EcosSyntaxError& error) {
    return std::move(error);
  }
}

std::string decimal(unsigned value) {
  std::array<char, 10> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return std::string(digits.data(), end);
}

std::optional<unsigned> parse_decimal(std::string_view digits) {
  unsigned value = 0;
  const auto* end = digits.data() + digits.size();
  const auto [rest, error] = std::from_chars(digits.data(), end, value);
  if (error != std::errc() || rest != end) return std::nullopt;
  return value;
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"') result += '"';
    result += is_control(c) ? ' ' : c;
  }
  return result + '"';
}

std::string_view status_text(EcosStatus status) {
  switch (status) {
    case EcosStatus::ok:
      return "OK";
    case EcosStatus::unknown_command:
      return "unknown command";
    case EcosStatus::unknown_option:
      return "unknown option";
    case EcosStatus::bad_parameter:
      return "bad parameter";
    case EcosStatus::syntax_error:
      return "syntax error";
    case EcosStatus::unknown_object:
      return "unknown object";
    case EcosStatus::no_control:
      return "no control";
  }
  return "failed";
}

std::string format_reply(std::string_view command, const std::vector<std::string>& body,
                         unsigned status, std::string_view text) {
  std::string echo(command);
  std::replace_if(echo.begin(), echo.end(), is_control, '?');
  return format("<REPLY " + echo + ">", body, status, text);
}

std::string format_event(unsigned object, const std::vector<std::string>& body) {
  return format("<EVENT " + decimal(object) + ">", body, 0, status_text(EcosStatus::ok));
}

}  // namespace zemblar::simulator

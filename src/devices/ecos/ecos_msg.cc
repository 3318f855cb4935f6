#include "devices/ecos/ecos_msg.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace zemblar {
namespace {

// The protocol is ASCII whatever the user's locale says.
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

bool is_alnum(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view without_leading_space(std::string_view text) {
  const auto start = std::ranges::find_if_not(text, is_space);
  return text.substr(static_cast<std::size_t>(start - text.begin()));
}

/// Goes through bytes line by line.
class Lines {
 public:
  explicit Lines(std::string_view bytes) : bytes_(bytes) {}

  [[nodiscard]] std::size_t position() const { return position_; }
  void go_to(std::size_t position) { position_ = position; }

  /// Goes behind the next "<".
  void skip_to_bracket() {
    const auto bracket = bytes_.find('<', position_);
    if (bracket == std::string_view::npos) throw ECoSMsg::ErrorPartial();
    position_ = bracket + 1;
  }

  /// The rest of the line without its end, CR LF or LF alone.
  std::string_view read() {
    const auto feed = bytes_.find('\n', position_);
    if (feed == std::string_view::npos) throw ECoSMsg::ErrorPartial();
    auto line = bytes_.substr(position_, feed - position_);
    position_ = feed + 1;
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
  }

 private:
  std::string_view bytes_;
  std::size_t position_ = 0;
};

/// One line of a body, taken a character at a time.
class BodyLine {
 public:
  explicit BodyLine(ECoSMsg::Objects& objects) : objects_(objects) {}

  void take(char c) {
    switch (state_) {
      case State::id:
        return take_id(c);
      case State::between:
        return take_between(c);
      case State::key:
        return take_key(c);
      case State::value:
        return take_value(c);
      case State::plain:
        return take_plain(c);
      case State::quoted:
        return take_quoted(c);
      case State::after_quote:
        return take_after_quote(c);
    }
  }

  /// The object is there even when the line says nothing of it.
  void end() { objects_[id_]; }

 private:
  enum class State { id, between, key, value, plain, quoted, after_quote };

  void take_id(char c) {
    if (is_digit(c)) {
      id_ = id_ * 10 + static_cast<unsigned>(c - '0');
    } else if (is_space(c)) {
      objects_[id_];
      state_ = State::between;
    } else {
      throw ECoSMsg::ErrorBroken();
    }
  }

  void take_between(char c) {
    if (is_space(c)) return;
    if (!is_alnum(c)) throw ECoSMsg::ErrorBroken();
    key_ = c;
    state_ = State::key;
  }

  void take_key(char c) {
    if (is_alnum(c)) {
      key_ += c;
    } else if (is_space(c)) {
      store({});
    } else if (c == '[') {
      value_.clear();
      state_ = State::value;
    } else {
      throw ECoSMsg::ErrorBroken();
    }
  }

  void take_value(char c) {
    if (c == '"') {
      state_ = State::quoted;
    } else {
      take_plain(c);
    }
  }

  void take_plain(char c) {
    if (c == ']') return store(value_);
    if (!is_alnum(c)) throw ECoSMsg::ErrorBroken();
    value_ += c;
    state_ = State::plain;
  }

  void take_quoted(char c) {
    if (c == '"') {
      state_ = State::after_quote;
    } else {
      value_ += c;
    }
  }

  void take_after_quote(char c) {
    if (c == ']') return store(value_);
    if (c != '"') throw ECoSMsg::ErrorBroken();
    value_ += c;
    state_ = State::quoted;
  }

  void store(const std::string& value) {
    objects_[id_][key_] = value;
    state_ = State::between;
  }

  ECoSMsg::Objects& objects_;
  State state_ = State::id;
  unsigned id_ = 0;
  std::string key_;
  std::string value_;
};

}  // namespace

ECoSMsg::ECoSMsg(const char* bytes, std::size_t& n) {
  Lines lines({bytes, n});
  while (true) {
    lines.skip_to_bracket();
    const auto after_bracket = lines.position();
    if (read_head(lines.read())) break;
    // A "<" in the middle of what was no head may begin one.
    lines.go_to(after_bracket);
  }
  auto line = lines.read();
  for (; !line.starts_with("<END"); line = lines.read()) read_body_line(line);
  read_end(line);
  n = lines.position();
}

bool ECoSMsg::read_head(std::string_view line) {
  if (!line.ends_with('>')) return false;
  line.remove_suffix(1);
  if (line.starts_with("REPLY ")) {
    type_ = reply;
    command_ = line.substr(6);
    return true;
  }
  if (!line.starts_with("EVENT ")) return false;
  const auto number = without_leading_space(line.substr(6));
  if (number.empty() || !is_digit(number.front())) return false;
  type_ = event;
  object_ = leading_number(number);
  return true;
}

void ECoSMsg::read_body_line(std::string_view line) {
  BodyLine body(objects_);
  for (const auto c : line) body.take(c);
  body.end();
}

void ECoSMsg::read_end(std::string_view line) {
  if (!line.ends_with('>')) return;
  status_ = leading_number(without_leading_space(line.substr(4)));
  const auto open = line.find('(');
  const auto close = line.rfind(')');
  if (status_ != 0 && open < close && close != std::string_view::npos) {
    status_text_ = line.substr(open + 1, close - open - 1);
  }
}

const ECoSMsg::Values& ECoSMsg::get_object(unsigned id) const {
  const auto found = objects_.find(id);
  if (found == objects_.end()) throw ErrorNoObject();
  return found->second;
}

std::string value_of(const ECoSMsg::Values& values, const char* key) {
  const auto found = values.find(key);
  return found == values.end() ? std::string() : found->second;
}

unsigned leading_number(std::string_view text) {
  unsigned number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool too_large = result.ec == std::errc::result_out_of_range;
  return too_large ? std::numeric_limits<unsigned>::max() : number;
}

std::optional<ECoSMsg> ECoSFraming::next() {
  while (pos_ < fill_) {
    try {
      auto count = fill_ - pos_;
      ECoSMsg message(buffer_.data() + pos_, count);
      pos_ += count;
      return message;
    } catch (const ECoSMsg::ErrorBroken&) {
      ++pos_;
    } catch (const ECoSMsg::ErrorPartial&) {
      break;
    }
  }
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(pos_),
            buffer_.begin() + static_cast<std::ptrdiff_t>(fill_), buffer_.begin());
  fill_ -= pos_;
  pos_ = 0;
  return std::nullopt;
}

}  // namespace zemblar

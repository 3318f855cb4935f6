#include "core/plain_yaml.h"

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/mark.h>

#include <algorithm>
#include <array>
#include <string>

namespace zemblar {
namespace {

constexpr std::string_view header = "%YAML 1.2\n";
constexpr std::size_t indent_step = 2;
constexpr std::size_t longest_key = 200;  // the library takes no longer text for a key
constexpr std::size_t deepest_indent = 100;
constexpr auto no_tag = "?";
constexpr auto quoted_tag = "!";

bool is_alphanumeric(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool is_continuation(char c) {
  return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

/// Length in bytes of a non-ASCII letter, from U+00C0 on, at the start of the text; 0 if there is
/// none.
std::size_t letter_length(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = lead >= 0xc3 && lead <= 0xdf   ? 2
                             : lead >= 0xe3 && lead <= 0xec ? 3
                                                            : 0;
  if (length == 0 || text.size() < length) return 0;
  return std::ranges::all_of(text.substr(1, length - 1), is_continuation) ? length : 0;
}

// None of these characters ends a plain scalar or makes it something else.
bool is_plain(std::string_view text) {
  constexpr std::string_view inner = " ._-/+()";
  if (text.empty() || text.back() == ' ') return false;
  const bool starts_well = is_alphanumeric(text.front()) || text.front() == '/' ||
                           text.starts_with("../") ||
                           (text.front() == '-' && text.size() > 1 && is_alphanumeric(text[1])) ||
                           letter_length(text) > 0;
  if (!starts_well) return false;
  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    const bool in_word = c == ':' && i + 1 < text.size() && is_alphanumeric(text[i + 1]);
    const bool known = is_alphanumeric(c) || inner.find(c) != inner.npos || in_word;
    const auto length = known ? 1 : letter_length(text.substr(i));
    if (length == 0) return false;
    i += length;
  }
  constexpr std::array<std::string_view, 3> nulls{"null", "Null", "NULL"};
  return std::ranges::find(nulls, text) == nulls.end();
}

bool is_quoted(std::string_view text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') return false;
  return std::ranges::all_of(text.substr(1, text.size() - 2),
                             [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

bool is_tag(std::string_view text) {
  return text.size() > 1 && text.front() == '!' && std::ranges::all_of(text.substr(1), [](char c) {
           return is_alphanumeric(c) || c == '-' || c == '/';
         });
}

class Reader {
 public:
  Reader(std::string_view text, YAML::EventHandler& handler) : text_(text), handler_(handler) {}

  bool read() {
    if (text_.starts_with(header)) {
      next_ = header.size();
      ++number_;
    }
    if (!advance() || indent_ != 0 || is_item()) return false;
    const auto mark = mark_at(0);
    handler_.OnDocumentStart(mark);
    if (!read_map(0, mark, no_tag) || !at_end_) return false;
    handler_.OnDocumentEnd();
    return true;
  }

 private:
  // --- Lines ---

  /// Goes to the next line. False at the end of the text, and for a line outside the narrow form.
  bool advance() {
    start_ = next_;
    ++number_;
    at_end_ = start_ == text_.size();
    if (at_end_) return false;
    const auto end = text_.find('\n', start_);
    if (end == text_.npos) return false;
    next_ = end + 1;
    content_ = text_.substr(start_, end - start_);
    indent_ = std::min(content_.find_first_not_of(' '), content_.size());
    content_.remove_prefix(indent_);
    return !content_.empty() && indent_ <= deepest_indent;
  }
  [[nodiscard]] bool is_line_at(std::size_t indent) const {
    return !at_end_ && !content_.empty() && indent_ == indent;
  }
  [[nodiscard]] bool is_item() const { return content_.starts_with("- "); }

  /// The position of a byte of the current line.
  [[nodiscard]] YAML::Mark mark_at(std::size_t column) const {
    YAML::Mark mark;
    mark.pos = static_cast<int>(start_ + column);
    mark.line = number_;
    mark.column = static_cast<int>(column);
    return mark;
  }

  // --- Nodes ---

  bool read_map(std::size_t indent, const YAML::Mark& mark, const std::string& tag) {
    if (!is_line_at(indent)) return false;
    handler_.OnMapStart(mark, tag, YAML::NullAnchor, YAML::EmitterStyle::Block);
    while (is_line_at(indent) && !is_item()) {
      if (!read_pair(indent)) return false;
    }
    handler_.OnMapEnd();
    return true;
  }

  bool read_pair(std::size_t indent) {
    const auto separator = content_.find(": ");
    const bool has_value = separator != content_.npos;
    const auto key = content_.substr(0, has_value ? separator : content_.size() - 1);
    if (!has_value && content_.back() != ':') return false;
    if (!is_plain(key) || key.size() > longest_key) return false;
    emit_scalar(mark_at(indent), no_tag, key);
    if (!has_value) return advance() && read_below(indent + indent_step);
    const auto value = separator + 2;
    return read_value(content_.substr(value), indent + value) && finish_line();
  }

  bool read_below(std::size_t indent) {
    if (!is_line_at(indent)) return false;
    if (content_.front() == '[') return read_value(content_, indent) && finish_line();
    return is_item() ? read_sequence(indent) : read_map(indent, mark_at(indent), no_tag);
  }

  bool read_sequence(std::size_t indent) {
    handler_.OnSequenceStart(mark_at(indent), no_tag, YAML::NullAnchor, YAML::EmitterStyle::Block);
    while (is_line_at(indent) && is_item()) {
      if (!read_item(indent + indent_step)) return false;
    }
    handler_.OnSequenceEnd();
    return true;
  }

  /// Treats the rest of the line after "- " as the first line of the item.
  bool read_item(std::size_t indent) {
    content_.remove_prefix(indent_step);
    indent_ = indent;
    if (content_.empty() || is_item()) return false;
    if (content_.front() == '[') return read_value(content_, indent) && finish_line();
    if (content_.front() != '!') return read_map(indent, mark_at(indent), no_tag);
    const auto mark = mark_at(indent);
    const std::string tag(content_);
    return is_tag(tag) && advance() && !is_item() && read_map(indent, mark, tag);
  }

  // False when the next line is indented deeper, because it would continue this line's scalar.
  bool finish_line() {
    const auto indent = indent_;
    return advance() ? indent_ <= indent : at_end_;
  }

  bool read_value(std::string_view value, std::size_t column) {
    if (!value.starts_with('[')) return read_scalar(value, column);
    if (!value.ends_with(']')) return false;
    handler_.OnSequenceStart(mark_at(column), no_tag, YAML::NullAnchor, YAML::EmitterStyle::Flow);
    if (!read_elements(value.substr(1, value.size() - 2), column + 1)) return false;
    handler_.OnSequenceEnd();
    return true;
  }

  bool read_elements(std::string_view list, std::size_t column) {
    constexpr std::string_view between = ", ";
    while (!list.empty()) {
      const auto end = std::min(list.find(between), list.size());
      if (!read_scalar(list.substr(0, end), column)) return false;
      if (end == list.size()) return true;
      list.remove_prefix(end + between.size());
      column += end + between.size();
      if (list.empty()) return false;
    }
    return true;
  }

  bool read_scalar(std::string_view value, std::size_t column) {
    const auto mark = mark_at(column);
    if (value == "~") {
      handler_.OnNull(mark, YAML::NullAnchor);
      return true;
    }
    std::string tag;
    if (value.starts_with('!')) {
      const auto end = value.find(' ');
      if (end == value.npos || !is_tag(value.substr(0, end))) return false;
      tag = value.substr(0, end);
      value.remove_prefix(end + 1);
    }
    if (is_plain(value)) return emit_scalar(mark, tag.empty() ? no_tag : tag, value);
    if (!is_quoted(value)) return false;
    return emit_scalar(mark, tag.empty() ? quoted_tag : tag, value.substr(1, value.size() - 2));
  }

  bool emit_scalar(const YAML::Mark& mark, const std::string& tag, std::string_view value) {
    handler_.OnScalar(mark, tag, YAML::NullAnchor, std::string(value));
    return true;
  }

  std::string_view text_;
  YAML::EventHandler& handler_;
  std::size_t next_ = 0;  // start of the next line
  // The current line, without its indent.
  int number_ = -1;
  std::size_t start_ = 0;
  std::size_t indent_ = 0;
  std::string_view content_;
  bool at_end_ = false;
};

/// Discards the events of the first pass, which only checks the form.
class IgnoredEvents : public YAML::EventHandler {
  void OnDocumentStart(const YAML::Mark&) override {}
  void OnDocumentEnd() override {}
  void OnNull(const YAML::Mark&, YAML::anchor_t) override {}
  void OnAlias(const YAML::Mark&, YAML::anchor_t) override {}
  void OnScalar(const YAML::Mark&, const std::string&, YAML::anchor_t,
                const std::string&) override {}
  void OnSequenceStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                       YAML::EmitterStyle::value) override {}
  void OnSequenceEnd() override {}
  void OnMapStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                  YAML::EmitterStyle::value) override {}
  void OnMapEnd() override {}
};

}  // namespace

bool read_plain_yaml(std::string_view text, YAML::EventHandler& handler) {
  IgnoredEvents ignored;
  return Reader(text, ignored).read() && Reader(text, handler).read();
}

}  // namespace zemblar

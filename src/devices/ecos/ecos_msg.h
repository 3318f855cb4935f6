#pragma once

#include <array>
#include <cstddef>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zemblar {

/// One message from an ECoS station.
///
/// A reply is a head line `<REPLY command>`, a body and an end line `<END status (text)>`; an event
/// has the head `<EVENT object>`. Lines end with LF or CR LF. A body line is an object id and then
/// keys, each with or without a value: `1000 addr[3] name["Shunter"]`. In a quoted value a double
/// quote is doubled. Keys and plain values are letters and digits; any other character, such as the
/// comma of `func[2,1]`, makes the message broken.
///
/// Pure: no I/O, no clock, no locale.
class ECoSMsg {
 public:
  static constexpr unsigned event = 1;
  static constexpr unsigned reply = 2;

  using Values = std::map<std::string, std::string>;
  using Objects = std::map<unsigned, Values>;

  /// The bytes end before the message does.
  class ErrorPartial : public std::exception {
   public:
    const char* what() const noexcept override { return "Partial Message"; }
  };
  class ErrorBroken : public std::exception {
   public:
    const char* what() const noexcept override { return "Broken Message"; }
  };
  class ErrorNoObject : public std::exception {
   public:
    const char* what() const noexcept override { return "No Such Object"; }
  };

  /// Reads the first message in `n` bytes, skipping what precedes it. Stores the number of bytes
  /// used in `n`. Throws ErrorPartial and ErrorBroken without changing `n`.
  ECoSMsg(const char* bytes, std::size_t& n);

  [[nodiscard]] unsigned get_type() const { return type_; }
  /// The object of an event.
  [[nodiscard]] unsigned get_object() const { return object_; }
  /// The command that a reply answers, as it was sent.
  [[nodiscard]] const std::string& get_command() const { return command_; }
  [[nodiscard]] const Objects& get_objects() const { return objects_; }
  /// The values of one object in the body. Throws ErrorNoObject.
  [[nodiscard]] const Values& get_object(unsigned id) const;
  /// 0 is success.
  [[nodiscard]] unsigned get_status() const { return status_; }
  /// The station's text for the status, without parentheses.
  [[nodiscard]] const std::string& get_status_text() const { return status_text_; }

 private:
  bool read_head(std::string_view line);
  void read_body_line(std::string_view line);
  void read_end(std::string_view line);

  unsigned type_ = 0;
  unsigned object_ = 0;
  std::string command_;
  Objects objects_;
  unsigned status_ = 0;
  std::string status_text_;
};

/// The value of a key; empty if there is no such key.
[[nodiscard]] std::string value_of(const ECoSMsg::Values& values, const char* key);
/// The decimal number at the start of the text; 0 if there is none, the largest `unsigned` if it is
/// too large.
[[nodiscard]] unsigned leading_number(std::string_view text);

/// Cuts the stream from a station into messages.
///
/// Holds `capacity` bytes, so a longer message can never be completed, and `room` becomes 0. If
/// bytes are no message, it skips one byte and tries again.
class ECoSFraming {
 public:
  static constexpr std::size_t capacity = 1024;

  /// The place for the next bytes, and how many fit.
  [[nodiscard]] char* tail() { return buffer_.data() + fill_; }
  [[nodiscard]] std::size_t room() const { return capacity - fill_; }
  /// Call after writing `count` bytes to `tail`.
  void add(std::size_t count) { fill_ += count; }
  /// The next whole message; no value if more bytes are needed.
  [[nodiscard]] std::optional<ECoSMsg> next();
  /// Discards all bytes.
  void clear() { fill_ = pos_ = 0; }

 private:
  std::array<char, capacity> buffer_;
  std::size_t fill_ = 0;
  std::size_t pos_ = 0;  // the bytes before this have been processed
};

}  // namespace zemblar

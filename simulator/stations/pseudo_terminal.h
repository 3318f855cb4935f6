#pragma once

#include <sigc++/connection.h>

#include <functional>
#include <string>
#include <string_view>

namespace zemblar::simulator {

/// A serial device without hardware: the far end of a pseudo-terminal.
///
/// It carries bytes, but has no modem lines. Runs on the default main loop.
class PseudoTerminal {
 public:
  /// Throws std::runtime_error when the system has none left.
  PseudoTerminal();
  ~PseudoTerminal() { hang_up(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  /// The path that a program opens.
  [[nodiscard]] const std::string& path() const { return path_; }
  void send(std::string_view bytes) const;
  /// Called with the bytes that come from the program.
  void on_bytes(std::function<void(std::string_view)> listener) { listener_ = std::move(listener); }
  /// Closes the terminal, like hardware that is unplugged.
  void hang_up();

 private:
  bool receive();

  int fd_;
  std::string path_;
  int keep_ = -1;  // the program's end, so that its closing does not end the terminal
  std::function<void(std::string_view)> listener_;
  sigc::connection readable_;
};

}  // namespace zemblar::simulator

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace zemblar {

/// Handshake of a serial line: none, RTS/CTS, or XON/XOFF.
enum class Flow : int { None = 0, Hard = 1, Soft = 2 };
enum class Parity : int { None = 0, Even = 1, Odd = 2, Mark = 3, Space = 4 };

struct LineSettings {
  unsigned baud = 0;  ///< bits per second; 0 until set
  unsigned data_bits = 8;
  unsigned stop_bits = 1;
  Flow flow = Flow::None;
  Parity parity = Parity::None;
};

/// The modem lines that the far end drives.
struct ModemLines {
  bool dsr = false;
  bool ri = false;
  bool dcd = false;
};

/// The seam under SerialPort: one non-blocking serial line.
///
/// No function suspends or blocks. Errors are values of errno, 0 for success. All functions except
/// `open` and `close` need an open line.
class SerialLine {
 public:
  struct Transferred {
    std::size_t bytes = 0;
    int error = 0;  ///< EAGAIN when no bytes can be moved now
  };
  enum class Awaited { bytes, room };

  virtual ~SerialLine() = default;

  /// Opens the line exclusively, with DTR and RTS off and both buffers emptied.
  [[nodiscard]] virtual int open(const std::string& name, const LineSettings& settings) = 0;
  virtual int configure(const LineSettings& settings) = 0;
  /// Restores the former settings and closes the line. Does nothing on a closed one.
  virtual void close() = 0;

  /// On a line that is gone these return an error.
  virtual Transferred read(void* buffer, std::size_t count) = 0;
  virtual Transferred write(const void* bytes, std::size_t count) = 0;
  /// Discards received bytes that were not read.
  virtual void discard_input() = 0;
  /// Calls `call` once, from the main loop, when a transfer may be possible; replaces the former
  /// watch.
  virtual void watch(Awaited what, std::function<void()> call) = 0;
  virtual void stop_watching() = 0;

  /// The file descriptor of the open line, owned by the line; -1 if there is none.
  [[nodiscard]] virtual int descriptor() const { return -1; }
  [[nodiscard]] virtual ModemLines modem_lines() const = 0;
  virtual void set_dtr(bool on) = 0;
  virtual void set_rts(bool on) = 0;
};

/// A terminal device of the system, named by its path.
[[nodiscard]] std::unique_ptr<SerialLine> make_tty_line();

}  // namespace zemblar

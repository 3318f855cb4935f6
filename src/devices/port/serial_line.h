#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace zemblar {

/// Handshake of a serial line: none, by RTS and CTS, by XON and XOFF.
enum class Flow : int { None = 0, Hard = 1, Soft = 2 };
enum class Parity : int { None = 0, Even = 1, Odd = 2, Mark = 3, Space = 4 };

struct LineSettings {
  unsigned baud = 0;  ///< bits per second; none is set at first
  unsigned data_bits = 8;
  unsigned stop_bits = 1;
  Flow flow = Flow::None;
  Parity parity = Parity::None;
};

/// The lines that the far end drives.
struct ModemLines {
  bool dsr = false;
  bool ri = false;
  bool dcd = false;
};

/// The seam under SerialPort: one serial line, without waiting.
///
/// Nothing here suspends or blocks. Errors are the system's numbers, 0 for success. All but `open`
/// and `close` are called on an open line only.
class SerialLine {
 public:
  struct Transferred {
    std::size_t bytes = 0;
    int error = 0;  ///< EAGAIN when nothing can be moved now
  };
  enum class Awaited { bytes, room };

  virtual ~SerialLine() = default;

  /// Takes the line for this program alone, with DTR and RTS off and both directions emptied.
  [[nodiscard]] virtual int open(const std::string& name, const LineSettings& settings) = 0;
  virtual int configure(const LineSettings& settings) = 0;
  /// Gives the line back as it was found. Harmless on a closed one.
  virtual void close() = 0;

  /// A line that has gone gives an error.
  virtual Transferred read(void* buffer, std::size_t count) = 0;
  virtual Transferred write(const void* bytes, std::size_t count) = 0;
  /// Forgets what has arrived and was not read.
  virtual void discard_input() = 0;
  /// Calls once, from the main loop, when it is worth while to try again; replaces the last watch.
  virtual void watch(Awaited what, std::function<void()> call) = 0;
  virtual void stop_watching() = 0;

  /// The system's descriptor of the open line, -1 for a line that has none. Stays the line's.
  [[nodiscard]] virtual int descriptor() const { return -1; }
  [[nodiscard]] virtual ModemLines modem_lines() const = 0;
  virtual void set_dtr(bool on) = 0;
  virtual void set_rts(bool on) = 0;
};

/// A terminal device of the system, named by its path.
[[nodiscard]] std::unique_ptr<SerialLine> make_tty_line();

}  // namespace zemblar

#pragma once

#include <exception>
#include <functional>
#include <string>
#include <utility>

#include "devices/port/serial_port.h"

namespace zemblar {

/// An exchange with a Tessara device has failed.
class TessaraCmdFailed : public std::exception {
 public:
  explicit TessaraCmdFailed(std::string received = {}) : received_(std::move(received)) {}
  const char* what() const noexcept override { return "Tessara Command Failed"; }
  /// What had come by then.
  [[nodiscard]] const std::string& received() const { return received_; }

 private:
  std::string received_;
};

/// The device on a port has not taken the message, or not come to an end with its answer.
class TessaraNoEnd : public TessaraCmdFailed {
  using TessaraCmdFailed::TessaraCmdFailed;
};

/// One message to the Tessara device on a serial port, and its answer.
///
/// An exchange is framed by the modem lines alone: DTR is up while the program sends, DSR while the
/// device answers, and RI afterwards says that the answer is an error. A device that never stops
/// answering is given up after half a second, or after more bytes than any device has to say. What
/// arrived before an exchange began belongs to none and is dropped.
///
/// For fibers; suspends. The port must stay until the end.
class TessaraExchange {
 public:
  /// Ends early when `cancel` is cancelled, which it also is when the time is over, and when
  /// `goes_on` says no, which is asked after each wait.
  TessaraExchange(SerialPort& port, const SerialPort::Cancel& cancel, std::function<bool()> goes_on)
      : port_(port), cancel_(cancel), goes_on_(std::move(goes_on)) {}

  /// The answer. Throws TessaraCmdFailed when that is an error or the exchange ended early,
  /// TessaraNoEnd, and Gio::Error when the port fails.
  std::string run(const std::string& message);
  /// The answer as far as it has come.
  [[nodiscard]] const std::string& received() const { return received_; }

 private:
  void send(const std::string& message);
  void collect();
  void require_service() const;

  SerialPort& port_;
  SerialPort::Cancel cancel_;
  std::function<bool()> goes_on_;
  std::string received_;
};

}  // namespace zemblar

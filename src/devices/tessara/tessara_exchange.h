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
  /// The bytes received before the failure.
  [[nodiscard]] const std::string& received() const { return received_; }

 private:
  std::string received_;
};

/// The device on a port has not accepted the message, or has not ended its answer.
class TessaraNoEnd : public TessaraCmdFailed {
  using TessaraCmdFailed::TessaraCmdFailed;
};

/// One message to the Tessara device on a serial port, and its answer.
///
/// Only modem lines frame an exchange: DTR is up while the program sends, DSR while the device
/// answers, and RI afterwards means that the answer is an error. A device that does not stop
/// answering is given up after half a second, or after more bytes than any valid answer has. Bytes
/// that arrived before the exchange are dropped.
///
/// For fibers; suspends. The port must outlive the exchange.
class TessaraExchange {
 public:
  /// Ends early when `cancel` is cancelled, or when `goes_on`, called after each wait, returns
  /// false. Cancels `cancel` itself when the time is over.
  TessaraExchange(SerialPort& port, const SerialPort::Cancel& cancel, std::function<bool()> goes_on)
      : port_(port), cancel_(cancel), goes_on_(std::move(goes_on)) {}

  /// Sends the message and returns the answer. Throws TessaraCmdFailed if the answer is an error or
  /// the exchange has ended early, TessaraNoEnd, and Gio::Error if the port fails.
  std::string run(const std::string& message);
  /// The part of the answer received so far.
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

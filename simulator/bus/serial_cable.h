#pragma once

#include <cerrno>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "devices/port/serial_line.h"

namespace zemblar::simulator {

/// A serial cable in memory, with its modem lines, seen from the hardware's end.
///
///     SerialCable cable;
///     const auto port = SerialPort::create({.port_name = "memory"}, cable.plug());
///     cable.on_bytes([&](std::string_view bytes) { cable.send(answer_to(bytes)); });
///
/// The program's end is notified in a later iteration of the main loop, never inside `send`. A
/// transfer takes no time by itself. The cable must outlive the use of the port.
class SerialCable {
 public:
  SerialCable() = default;
  ~SerialCable() { unplug(); }
  SerialCable(const SerialCable&) = delete;
  SerialCable& operator=(const SerialCable&) = delete;

  /// The program's end; one at a time.
  [[nodiscard]] std::unique_ptr<SerialLine> plug();
  /// Unplugs the hardware: all later operations of the program fail.
  void unplug();

  /// Sends bytes to the program; they are lost while the program has not opened the line.
  void send(std::string_view bytes);
  /// Called with the bytes that the program sends, as it sends them.
  void on_bytes(std::function<void(std::string_view)> listener) { listener_ = std::move(listener); }
  /// Called when DTR changes; DTR falls when the program closes or releases the line.
  void on_dtr(std::function<void(bool)> listener) { dtr_listener_ = std::move(listener); }
  /// Holds up the program's bytes, as CTS does, or stops doing so.
  void hold_up(bool on);

  // The modem lines that the hardware drives: DSR, RI and DCD.
  ModemLines lines;

  // The state of the line as set by the program.
  [[nodiscard]] bool is_open() const { return open_; }
  [[nodiscard]] bool dtr() const { return dtr_; }
  [[nodiscard]] bool rts() const { return rts_; }
  [[nodiscard]] const LineSettings& settings() const { return settings_; }

  /// Makes each read return as many bytes as requested, endlessly.
  bool floods = false;

  int refusal = 0;                 // errno of an attempt to open the line; 0 for success
  int loss = EIO;                  // errno of transfers after `unplug`
  std::size_t write_limit = 4096;  // bytes that one write takes

 private:
  class Line;

  void ready();
  void change_dtr(bool on);

  Line* line_ = nullptr;
  std::function<void(std::string_view)> listener_;
  std::function<void(bool)> dtr_listener_;
  std::string arrived_;
  LineSettings settings_;
  bool gone_ = false;
  bool open_ = false;
  bool dtr_ = false;
  bool rts_ = false;
  bool held_up_ = false;
};

}  // namespace zemblar::simulator

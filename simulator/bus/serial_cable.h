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
/// Whatever the program's end waits for happens in a later turn of the main loop, never inside
/// `send`; time passes only where the hardware lets it. Must outlive the use of what it is plugged
/// into.
class SerialCable {
 public:
  SerialCable() = default;
  ~SerialCable() { unplug(); }
  SerialCable(const SerialCable&) = delete;
  SerialCable& operator=(const SerialCable&) = delete;

  /// The program's end; one at a time.
  [[nodiscard]] std::unique_ptr<SerialLine> plug();
  /// The hardware has gone: all that the program tries from now on fails.
  void unplug();

  /// Bytes towards the program; lost while it has not opened the line.
  void send(std::string_view bytes);
  /// Called with the bytes that the program sends, as it sends them.
  void on_bytes(std::function<void(std::string_view)> listener) { listener_ = std::move(listener); }
  /// Called when DTR changes; it falls when the program closes the line or lets go of it.
  void on_dtr(std::function<void(bool)> listener) { dtr_listener_ = std::move(listener); }
  /// Holds up the program's bytes, as CTS does, or lets them go.
  void hold_up(bool on);

  // What the hardware drives: DSR, RI and DCD.
  ModemLines lines;

  // What the program has done to the line.
  [[nodiscard]] bool is_open() const { return open_; }
  [[nodiscard]] bool dtr() const { return dtr_; }
  [[nodiscard]] bool rts() const { return rts_; }
  [[nodiscard]] const LineSettings& settings() const { return settings_; }

  /// Each read finds as many bytes as it asks for, without an end.
  bool floods = false;

  int refusal = 0;                 // the system's error number for an attempt to open
  int loss = EIO;                  // the same for transfers when the hardware has gone
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

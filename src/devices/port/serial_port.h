#pragma once

#include <giomm/asyncresult.h>
#include <giomm/cancellable.h>
#include <glibmm/object.h>
#include <sigc++/signal.h>

#include <chrono>
#include <memory>

#include "devices/port/hw_device.h"
#include "devices/port/serial_line.h"
#include "runtime/read_turns.h"

namespace zemblar {

/// A serial port whose operations look synchronous to the fiber that calls them.
///
/// `open`, `read` and `write` suspend the running fiber until they have ended; all else needs no
/// fiber. One operation at a time: a fiber must not read while another writes. The port lives until
/// its last operation has ended, whoever lets go of it.
///
/// Throws Gio::Error: CLOSED "Closed", PENDING "Pending Operation", CANCELLED "Cancelled", and with
/// the system's own error number "GetLastError" from `read` and `write` and
/// "SerialPort::open_async Failed" from `open`. A line that has gone gives an error and never
/// counts of 0 for ever. A line that never runs dry leaves the main loop its turns (see ReadTurns).
///
/// The line below it is a seam, so that one in memory can stand in.
class SerialPort : public Glib::Object, public HWDevice {
 public:
  using Cancel = Glib::RefPtr<Gio::Cancellable>;
  /// How long a read waits for its first byte, unless it is told.
  static constexpr std::chrono::milliseconds read_timeout{1000};

  static Glib::RefPtr<SerialPort> create(const HWDevice& record,
                                         std::unique_ptr<SerialLine> line = make_tty_line());
  ~SerialPort() override;

  // On an open port these take effect at once. A value outside the range fails an assertion.

  /// The usual rates from 50 to 230400; 14400 is none of them.
  void set_baud(unsigned baud);
  void set_data_bits(unsigned bits);  ///< 5 to 8
  void set_stop_bits(unsigned bits);  ///< 1 or 2
  void set_flow(Flow mode);
  void set_parity(Parity mode);

  /// False on a closed port.
  [[nodiscard]] bool get_dsr() const { return lines().dsr; }
  [[nodiscard]] bool get_dcd() const { return lines().dcd; }
  [[nodiscard]] bool get_ri() const { return lines().ri; }
  void set_dtr(bool on);
  /// Without effect when the handshake is RTS's own.
  void set_rts(bool on);

  /// Takes the port for this program alone. An open one stays open. Besides the errors above throws
  /// FAILED "Invalid Baud Rate", "Invalid Data Bits" or "Invalid Stop Bits".
  void open(const Cancel& cancel = {});
  /// The count read: what is there at once, or what comes first within `timeout`, or 0. The buffer
  /// must stay until the operation has ended.
  std::size_t read(void* buffer, std::size_t count, const Cancel& cancel = {},
                   std::chrono::milliseconds timeout = read_timeout);
  /// The count written, which may be less. Waits for as long as the far end holds up the line.
  std::size_t write(const void* bytes, std::size_t count, const Cancel& cancel = {});
  /// Gives the line back with the settings that it had. An operation under way ends with CLOSED in
  /// the next turn of the main loop; the port can be opened again at once.
  void close();
  /// Forgets what has arrived and was not read.
  void discard_input();

  [[nodiscard]] bool is_open() const { return open_; }
  /// The system's descriptor of the open port, else -1. Stays the port's.
  [[nodiscard]] int descriptor() const { return open_ ? line_->descriptor() : -1; }
  [[nodiscard]] bool busy() const { return transfer_ != nullptr; }
  /// The hardware has gone for good.
  [[nodiscard]] bool is_removed() const { return removed_; }
  /// A transfer has failed as it does on a line that has gone (EIO, ENODEV, ENXIO), and the port
  /// was not opened again since. Hardware that was replaced may look like that, and a driver that
  /// failed.
  [[nodiscard]] bool is_lost() const { return lost_; }
  sigc::signal<void>& signal_lost() { return signal_lost_; }
  /// Some device has taken the port for itself. See PortHold.
  [[nodiscard]] bool is_held() const { return held_; }
  void set_held(bool held) { held_ = held; }

  /// The hardware has gone: closes the port and tells its user, who lets go of it.
  void remove();
  sigc::signal<void>& signal_removed() { return signal_removed_; }

 protected:
  SerialPort(const HWDevice& record, std::unique_ptr<SerialLine> line);

  LineSettings settings_;

 private:
  using Slot = Gio::SlotAsyncReady;
  struct Transfer;

  void configure();
  [[nodiscard]] ModemLines lines() const;
  [[nodiscard]] const char* fault_in_settings() const;
  void begin_open(const Cancel& cancel, const Slot& done);
  bool may_begin(const Slot& done);
  void begin(std::shared_ptr<Transfer> transfer, const Cancel& cancel,
             std::chrono::milliseconds limit);
  void try_or_wait(const Cancel& cancel, std::chrono::milliseconds limit);
  void wait_until_ready();
  bool try_transfer();
  void fail_by_system(int error);
  void fail(int code, const char* text);
  std::shared_ptr<Transfer> end_transfer();
  Glib::RefPtr<SerialPort> hold();

  std::unique_ptr<SerialLine> line_;
  bool open_ = false;
  bool held_ = false;
  bool removed_ = false;
  bool lost_ = false;
  std::shared_ptr<Transfer> transfer_;  // holds the port; null unless one is under way
  ReadTurns turns_;
  Clock::time_point waits_since_{};  // the transfer, for the line
  sigc::signal<void> signal_removed_;
  sigc::signal<void> signal_lost_;
};

}  // namespace zemblar

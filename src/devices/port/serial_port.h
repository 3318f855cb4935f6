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
/// `open`, `read` and `write` suspend the running fiber until they have ended; all others need no
/// fiber. Only one operation at a time: a fiber must not read while another writes. The port exists
/// until its last operation has ended, even if all other references are released.
///
/// Throws Gio::Error: CLOSED "Closed", PENDING "Pending Operation", CANCELLED "Cancelled", and with
/// the system's own error number "GetLastError" from `read` and `write` and "SerialPort::open_async
/// Failed" from `open`. Reading from a line that is gone gives an error, not endless counts of 0. A
/// line that delivers without a pause does not block the main loop (see ReadTurns).
///
/// The line is a seam, so that tests can use one in memory.
class SerialPort : public Glib::Object, public HWDevice {
 public:
  using Cancel = Glib::RefPtr<Gio::Cancellable>;
  /// How long a read waits for its first byte by default.
  static constexpr std::chrono::milliseconds read_timeout{1000};

  static Glib::RefPtr<SerialPort> create(const HWDevice& record,
                                         std::unique_ptr<SerialLine> line = make_tty_line());
  ~SerialPort() override;

  // Settings. On an open port they take effect at once. A value outside the range fails an
  // assertion.

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
  /// Has no effect with the RTS/CTS handshake.
  void set_rts(bool on);

  /// Opens the port exclusively; does nothing if it is open. Besides the errors above throws FAILED
  /// "Invalid Baud Rate", "Invalid Data Bits" or "Invalid Stop Bits".
  void open(const Cancel& cancel = {});
  /// Returns the number of bytes read: what is available at once, else what arrives first within
  /// `timeout`, else 0. The buffer must exist until the operation has ended.
  std::size_t read(void* buffer, std::size_t count, const Cancel& cancel = {},
                   std::chrono::milliseconds timeout = read_timeout);
  /// Returns the number of bytes written, which may be less than `count`. Waits without a limit
  /// while the far end holds up the line.
  std::size_t write(const void* bytes, std::size_t count, const Cancel& cancel = {});
  /// Closes the port and restores the line's former settings. An operation in progress ends with
  /// CLOSED in the next iteration of the main loop; the port can be opened again at once.
  void close();
  /// Discards received bytes that were not read.
  void discard_input();

  [[nodiscard]] bool is_open() const { return open_; }
  /// The file descriptor of the open port, owned by the port; else -1.
  [[nodiscard]] int descriptor() const { return open_ ? line_->descriptor() : -1; }
  [[nodiscard]] bool busy() const { return transfer_ != nullptr; }
  /// True if the hardware has been unplugged.
  [[nodiscard]] bool is_removed() const { return removed_; }
  /// True if a transfer has failed like on unplugged hardware (EIO, ENODEV, ENXIO), and the port
  /// has not been opened since. Replaced hardware or a failed kernel driver can have the same
  /// effect.
  [[nodiscard]] bool is_lost() const { return lost_; }
  sigc::signal<void>& signal_lost() { return signal_lost_; }
  /// True if a device has taken the port. See PortHold.
  [[nodiscard]] bool is_held() const { return held_; }
  void set_held(bool held) { held_ = held; }

  /// Call when the hardware is unplugged: closes the port and emits `signal_removed`, upon which
  /// the user releases the port.
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
  std::shared_ptr<Transfer> transfer_;  // holds a reference to the port; null without a transfer
  ReadTurns turns_;
  Clock::time_point waits_since_{};  // when the transfer began to wait for the line
  sigc::signal<void> signal_removed_;
  sigc::signal<void> signal_lost_;
};

}  // namespace zemblar

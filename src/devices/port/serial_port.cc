#include "devices/port/serial_port.h"

#include <gio/gio.h>
#include <giomm/error.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cerrno>
#include <utility>

#include "runtime/async_result.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {
namespace {

using std::chrono::milliseconds;

/// Time limit of a transfer that may wait without a limit.
constexpr auto no_limit = milliseconds::max();

constexpr std::array<unsigned, 18> baud_rates = {50,   75,    110,   134,   150,    200,
                                                 300,  600,   1200,  1800,  2400,   4800,
                                                 9600, 19200, 38400, 57600, 115200, 230400};

bool is_baud_rate(unsigned baud) {
  return std::ranges::find(baud_rates, baud) != baud_rates.end();
}

/// Uses numbers, because values of errno exceed the toolkit's enumeration.
Gio::Error error_of(int code, const char* text) {
  return Gio::Error(g_error_new_literal(G_IO_ERROR, code, text));
}

}  // namespace

/// A read or a write in progress.
struct SerialPort::Transfer {
  Glib::RefPtr<SerialPort> port;
  Slot done;
  SerialLine::Awaited awaited;
  std::function<SerialLine::Transferred(SerialLine&)> attempt;
  Timeout timeout{};
  ScopedConnection cancelled{};

  void succeed(std::size_t count) const {
    auto result = AsyncResult<std::size_t>::create(port, count);
    done(result);
  }
  void fail(int code, const char* text) const {
    complete_with_error(done, port, error_of(code, text));
  }
};

Glib::RefPtr<SerialPort> SerialPort::create(const HWDevice& record,
                                            std::unique_ptr<SerialLine> line) {
  return Glib::RefPtr<SerialPort>(new SerialPort(record, std::move(line)));
}

SerialPort::SerialPort(const HWDevice& record, std::unique_ptr<SerialLine> line)
    : HWDevice(record), line_(std::move(line)) {}

SerialPort::~SerialPort() {
  const bool busy = this->busy();
  assert(!busy);
  close();
}

Glib::RefPtr<SerialPort> SerialPort::hold() {
  reference();
  return Glib::RefPtr<SerialPort>(this);
}

// --- Settings ---

void SerialPort::set_baud(unsigned baud) {
  if (!is_baud_rate(baud)) assert(false);
  settings_.baud = baud;
  configure();
}

void SerialPort::set_data_bits(unsigned bits) {
  assert((bits >= 5) && (bits <= 8));
  settings_.data_bits = bits;
  configure();
}

void SerialPort::set_stop_bits(unsigned bits) {
  assert((bits == 1) || (bits == 2));
  settings_.stop_bits = bits;
  configure();
}

void SerialPort::set_flow(Flow mode) {
  assert((mode == Flow::None) || (mode == Flow::Hard) || (mode == Flow::Soft));
  settings_.flow = mode;
  configure();
}

void SerialPort::set_parity(Parity mode) {
  assert((mode >= Parity::None) && (mode <= Parity::Space));
  settings_.parity = mode;
  configure();
}

void SerialPort::configure() {
  if (open_) line_->configure(settings_);
}

const char* SerialPort::fault_in_settings() const {
  if (!is_baud_rate(settings_.baud)) return "Invalid Baud Rate";
  if (settings_.data_bits < 5 || settings_.data_bits > 8) return "Invalid Data Bits";
  if (settings_.stop_bits != 1 && settings_.stop_bits != 2) return "Invalid Stop Bits";
  return nullptr;
}

// --- Modem lines ---

ModemLines SerialPort::lines() const {
  return open_ ? line_->modem_lines() : ModemLines{};
}

void SerialPort::set_dtr(bool on) {
  if (open_) line_->set_dtr(on);
}

void SerialPort::set_rts(bool on) {
  if (open_ && settings_.flow != Flow::Hard) line_->set_rts(on);
}

// --- Opening and closing ---

void SerialPort::open(const Cancel& cancel) {
  const auto self = hold();
  await<bool>([self, cancel](const Slot& done) { self->begin_open(cancel, done); });
}

void SerialPort::begin_open(const Cancel& cancel, const Slot& done) {
  const auto refuse = [&](int code, const char* text) {
    complete_with_error(done, hold(), error_of(code, text));
  };
  if (busy()) return refuse(G_IO_ERROR_PENDING, "Pending Operation");
  if (!open_) {
    if (cancel && cancel->is_cancelled()) return refuse(G_IO_ERROR_CANCELLED, "Cancelled");
    if (const auto* fault = fault_in_settings()) return refuse(G_IO_ERROR_FAILED, fault);
    const auto error = line_->open(port_name, settings_);
    if (error != 0) return refuse(error, "SerialPort::open_async Failed");
    open_ = true;
    lost_ = false;
  }
  auto result = AsyncResult<bool>::create(hold(), true);
  done(result);
}

void SerialPort::close() {
  if (!std::exchange(open_, false)) return;
  const auto cut = end_transfer();
  line_->close();
  if (!cut) return;
  Timeout::once(milliseconds(0), [cut] { cut->fail(G_IO_ERROR_CLOSED, "Closed"); }).release();
}

void SerialPort::discard_input() {
  if (open_) line_->discard_input();
}

void SerialPort::remove() {
  const auto self = hold();
  removed_ = true;
  close();
  signal_removed_.emit();
}

// --- Reading and writing ---

std::size_t SerialPort::read(void* buffer, std::size_t count, const Cancel& cancel,
                             milliseconds timeout) {
  const auto self = hold();
  const auto attempt = [=](SerialLine& line) { return line.read(buffer, count); };
  return await<std::size_t>([self, cancel, attempt, timeout](const Slot& done) {
    if (!self->may_begin(done)) return;
    self->begin(
        std::make_shared<Transfer>(Transfer{self, done, SerialLine::Awaited::bytes, attempt}),
        cancel, timeout);
  });
}

std::size_t SerialPort::write(const void* bytes, std::size_t count, const Cancel& cancel) {
  const auto self = hold();
  const auto attempt = [=](SerialLine& line) { return line.write(bytes, count); };
  return await<std::size_t>([self, cancel, attempt](const Slot& done) {
    if (!self->may_begin(done)) return;
    self->begin(
        std::make_shared<Transfer>(Transfer{self, done, SerialLine::Awaited::room, attempt}),
        cancel, no_limit);
  });
}

bool SerialPort::may_begin(const Slot& done) {
  if (!open_) {
    complete_with_error(done, hold(), error_of(G_IO_ERROR_CLOSED, "Closed"));
  } else if (busy()) {
    complete_with_error(done, hold(), error_of(G_IO_ERROR_PENDING, "Pending Operation"));
  } else {
    return true;
  }
  return false;
}

void SerialPort::begin(std::shared_ptr<Transfer> transfer, const Cancel& cancel,
                       milliseconds limit) {
  transfer_ = std::move(transfer);
  const auto attempt = [this, cancel, limit] { try_or_wait(cancel, limit); };
  transfer_->awaited == SerialLine::Awaited::bytes ? turns_.take(attempt) : attempt();
}

// The time limit of a read starts here, because waiting for its turn says nothing about the line.
void SerialPort::try_or_wait(const Cancel& cancel, milliseconds limit) {
  if (cancel && cancel->is_cancelled()) return fail(G_IO_ERROR_CANCELLED, "Cancelled");
  if (try_transfer()) return;
  if (limit != no_limit) {
    transfer_->timeout = Timeout::once(limit, [this] {
      turns_.note_wait(Clock::now() - waits_since_);
      end_transfer()->succeed(0);
    });
  }
  // Ends the transfer later, because the caller may reuse the cancellable as soon as the operation
  // has ended, which would deadlock inside its emission.
  if (cancel) {
    transfer_->cancelled = sigc::connection(cancel->signal_cancelled().connect([this] {
      line_->stop_watching();
      transfer_->timeout =
          Timeout::once(milliseconds(0), [this] { fail(G_IO_ERROR_CANCELLED, "Cancelled"); });
    }));
  }
  waits_since_ = Clock::now();
  wait_until_ready();
}

void SerialPort::wait_until_ready() {
  line_->watch(transfer_->awaited, [this] {
    if (transfer_->awaited == SerialLine::Awaited::bytes) {
      turns_.note_wait(Clock::now() - waits_since_);
    }
    if (!try_transfer()) wait_until_ready();
  });
}

/// False if the transfer has to wait. Otherwise it has ended, and the port may be destroyed.
bool SerialPort::try_transfer() {
  const auto [bytes, error] = transfer_->attempt(*line_);
  if (error == EAGAIN) return false;
  if (error != 0) {
    fail_by_system(error);
  } else {
    end_transfer()->succeed(bytes);
  }
  return true;
}

void SerialPort::fail_by_system(int error) {
  const auto self = hold();
  if (error == EIO || error == ENODEV || error == ENXIO) {
    lost_ = true;
    signal_lost_.emit();
  }
  fail(error, "GetLastError");
}

void SerialPort::fail(int code, const char* text) {
  end_transfer()->fail(code, text);
}

/// Frees the port before the completion, which may begin the next transfer.
std::shared_ptr<SerialPort::Transfer> SerialPort::end_transfer() {
  if (!transfer_) return {};
  turns_.cancel();
  line_->stop_watching();
  auto ended = std::exchange(transfer_, nullptr);
  ended->timeout.cancel();
  ended->cancelled.disconnect();
  return ended;
}

}  // namespace zemblar

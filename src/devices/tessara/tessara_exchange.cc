#include "devices/tessara/tessara_exchange.h"

#include <giomm/error.h>

#include <array>

#include "runtime/timer.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

/// Time between the last write and lowering DTR, in which the driver sends its buffered bytes.
constexpr auto transmit_time = 20ms;
constexpr auto read_time = 5ms;
/// Time limit of a whole exchange; the longest valid one takes a tenth of it.
constexpr auto exchange_limit = 500ms;
/// Maximum length of an answer: 64 frames of the bus. A master sends 256 bytes at a time. A reader
/// on its own port sends everything since the last poll at once: in 50 ms seven DCC packets, each
/// with up to 255 inputs that answer with 8 bytes, plus counts.
constexpr std::size_t longest_answer = 64 * 256;

/// Keeps DTR up while it exists, so that the program may send.
class Transmission {
 public:
  explicit Transmission(SerialPort& port) : port_(port) { port_.set_dtr(true); }
  ~Transmission() { port_.set_dtr(false); }
  Transmission(const Transmission&) = delete;
  Transmission& operator=(const Transmission&) = delete;

 private:
  SerialPort& port_;
};

bool is_cut(const Gio::Error& error) {
  return error.code() == Gio::Error::CANCELLED || error.code() == Gio::Error::CLOSED;
}

}  // namespace

std::string TessaraExchange::run(const std::string& message) {
  bool too_late = false;
  const auto limit = Timeout::once(exchange_limit, [&too_late, cancel = cancel_] {
    too_late = true;
    cancel->cancel();
  });
  try {
    require_service();
    port_.discard_input();
    send(message);
    collect();
    return received_;
  } catch (const Gio::Error& error) {
    // Errno values of a line that is gone have the same numbers as toolkit codes such as CANCELLED.
    if (port_.is_lost() || !is_cut(error)) throw;
  }
  if (too_late) throw TessaraNoEnd(received_);
  throw TessaraCmdFailed(received_);
}

void TessaraExchange::require_service() const {
  if (!goes_on_()) throw TessaraCmdFailed(received_);
}

void TessaraExchange::send(const std::string& message) {
  const Transmission transmission(port_);
  for (std::size_t sent = 0; sent < message.size();) {
    sent += port_.write(message.data() + sent, message.size() - sent, cancel_);
    require_service();
  }
  port_.write(message.data(), 0, cancel_);
  require_service();
  sleep_for(transmit_time, cancel_);
}

// DSR is up while the device sends, and may fall before the last bytes have arrived. So two reads
// without bytes are needed at the end.
void TessaraExchange::collect() {
  std::array<char, 256> buffer{};
  bool was_silent = false;
  while (true) {
    require_service();
    const auto count = port_.read(buffer.data(), buffer.size(), cancel_, read_time);
    received_.append(buffer.data(), count);
    if (received_.size() > longest_answer) throw TessaraNoEnd(received_);
    if (count > 0 || port_.get_dsr()) continue;
    if (std::exchange(was_silent, true)) break;
  }
  if (port_.get_ri()) throw TessaraCmdFailed(received_);
}

}  // namespace zemblar

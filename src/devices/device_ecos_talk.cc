// How an ECoS talks: the reader, one exchange at a time, and the commands built from exchanges.

#include <glibmm/ustring.h>

#include "core/i18n.h"
#include "core/status.h"
#include "devices/device_ecos.h"
#include "devices/ecos_commands.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

/// A read that fails is tried again, but not so soon that nothing else gets a turn.
constexpr auto pause_after_failed_read = 100ms;

}  // namespace

// --- Reading ---

void ECoS::keep_reading(const Cancel& cancel) {
  const auto alive = liveness();
  ECoSFraming framing;
  while (read_some(framing, cancel)) {
    while (const auto message = framing.next()) {
      dispatch(*message);
      // Whoever was resumed may have ended the connection or the device.
      if (!*alive || cancel->is_cancelled()) return;
    }
  }
}

/// False when there is nothing more to read for this fiber.
bool ECoS::read_some(ECoSFraming& framing, const Cancel& cancel) {
  const auto alive = liveness();
  const auto socket = socket_;
  if (framing.room() == 0) {
    set_status(Glib::ustring::compose(
        _("%1 sent a message longer than %2 bytes, as a station with many locomotives does: its "
          "connection is opened anew. Remove locomotives that you do not need from the station."),
        get_name(), ECoSFraming::capacity));
  }
  gssize count = -1;
  try {
    // Without room this reads nothing, which is what the end of the connection looks like.
    count = socket->read(framing.tail(), static_cast<gsize>(framing.room()), cancel);
  } catch (...) {
    if (socket->is_connected()) {
      sleep_for(pause_after_failed_read, cancel);
    } else {
      count = 0;
    }
  }
  if (!*alive || cancel->is_cancelled()) return false;
  if (count == 0) give_up();
  if (count > 0) framing.add(static_cast<std::size_t>(count));
  return count != 0;
}

void ECoS::dispatch(const ECoSMsg& message) {
  if (message.get_type() == ECoSMsg::event) {
    if (message.get_object() != ecos::station) return;
    const auto body = message.get_objects().find(ecos::station);
    if (body != message.get_objects().end() && body->second.contains("status")) {
      follow_power(body->second);
    }
  } else if (exchange_ && !exchange_->answer && message.get_command() == exchange_->command) {
    exchange_->answer = message;
    wake_exchange();
  }
}

void ECoS::follow_power(const ECoSMsg::Values& station) {
  value_of(station, "status") == "GO" ? track_power_is_on() : track_power_is_off();
}

// --- One exchange ---

void ECoS::wake_exchange() {
  auto* waiter = std::exchange(exchange_->waiter, nullptr);
  if (waiter) fiber::resume(waiter, 0);
}

void ECoS::cut_exchange() {
  if (!exchange_) return;
  exchange_->cut = true;
  wake_exchange();
}

/// One command and its answer. Only inside a BusyLock.
ECoSMsg ECoS::command(const std::string& text) {
  const auto alive = liveness();
  if (!active()) throw DeviceInactiveException();
  if (exchange_) throw CmdFailed();
  // The answer may be read before the send is reported complete, so it is expected from here on.
  Exchange exchange{text};
  exchange_ = &exchange;
  const auto forget = [&] {
    if (*alive) exchange_ = nullptr;
  };
  try {
    send(text + '\n');
    if (!exchange.answer && !exchange.cut) {
      fiber::yield([&exchange](fiber* f) { exchange.waiter = f; });
    }
  } catch (...) {
    forget();
    throw;
  }
  forget();
  if (!*alive || exchange.cut) throw DeviceInactiveException();
  return *std::move(exchange.answer);
}

void ECoS::send(const std::string& bytes) {
  const auto alive = liveness();
  const auto socket = socket_;
  const auto cancel = write_cancel_;
  for (std::size_t sent = 0; sent < bytes.size();) {
    const auto count = socket->write(bytes.data() + sent, bytes.size() - sent, cancel);
    if (!*alive || !active()) throw DeviceInactiveException();
    if (count == 0) {
      give_up();
      throw DeviceInactiveException();
    }
    sent += static_cast<std::size_t>(count);
  }
}

ECoSMsg ECoS::expect_success(const std::string& text) {
  auto answer = command(text);
  if (answer.get_status() != 0) throw CmdFailed();
  return answer;
}

// A failure takes the device out of service while it is still busy: nobody who waits goes on with
// a connection that is of no use.
void ECoS::converse(const std::function<void()>& talk) {
  const auto alive = liveness();
  BusyLock lock(this, true);
  try {
    talk();
  } catch (...) {
    if (*alive) give_up();
    throw;
  }
}

// --- What the railway asks for ---

void ECoS::power_on() {
  converse([this] {
    if (command(ecos::go()).get_status() == 0) track_power_is_on();
  });
}

void ECoS::power_off() {
  converse([this] {
    if (command(ecos::stop()).get_status() == 0) track_power_is_off();
  });
}

void ECoS::set_point(unsigned address, unsigned output, bool on) {
  converse([&] { expect_success(ecos::switch_output(address, output, on)); });
}

void ECoS::update_speed(DrivenDecoder* decoder) {
  drive(decoder, DecoderUpdate::speed_bit, [](unsigned object, const DecoderUpdate& wanted) {
    return ecos::set_speed(object, wanted.speed);
  });
}

void ECoS::update_direction(DrivenDecoder* decoder) {
  drive(decoder, DecoderUpdate::direction_bit, [](unsigned object, const DecoderUpdate& wanted) {
    return ecos::set_direction(object, wanted.direction);
  });
}

void ECoS::update_function(DrivenDecoder* decoder, unsigned fn) {
  drive(decoder, DecoderUpdate::function_bit(fn), [fn](unsigned object, const auto& wanted) {
    return ecos::set_function(object, fn, wanted.function(fn));
  });
}

void ECoS::drive(DrivenDecoder* decoder, std::uint32_t item, const ValueCommand& value_command) {
  DecoderTask task(this, decoder);
  if (!task.leads()) return;
  converse([&] {
    // Read only now: others may have gone first, and the newest wish is the one to send.
    auto wanted = decoder->state();
    wanted.mask = item;
    const auto address = decoder->get_address();
    const auto object = object_id(address);
    try {
      expect_success(ecos::request_control(object));
      expect_success(value_command(object, wanted));
      expect_success(ecos::release_control(object));
    } catch (const CmdFailed&) {
      // The station may know the locomotive by another number by now, or not at all.
      objects_.erase(address);
      throw;
    }
    task.finish(wanted);
  });
}

// --- Locomotives at the station ---

unsigned ECoS::object_id(Address address) {
  const auto known = objects_.find(address);
  if (known != objects_.end()) return known->second;
  const auto found = find_locomotive(address);
  const auto object = found ? *found : create_locomotive(address);
  objects_[address] = object;
  return object;
}

std::optional<unsigned> ECoS::find_locomotive(Address address) {
  const auto answer = expect_success(ecos::query_locomotives());
  for (const auto& [object, values] : answer.get_objects()) {
    const auto number = leading_number(value_of(values, "addr"));
    // A station may list locomotives without an address, and numbers beyond DCC.
    if (Address::is_mobile_number(number) && Address(number) == address) return object;
  }
  return std::nullopt;
}

unsigned ECoS::create_locomotive(Address address) {
  const auto name = Glib::ustring::compose(_("Locomotive %1"), address.get_addr());
  const auto answer = expect_success(ecos::create_locomotive(address, name.raw()));
  const auto manager = answer.get_objects().find(ecos::locomotive_manager);
  if (manager == answer.get_objects().end()) throw CmdFailed();
  const auto object = leading_number(value_of(manager->second, "id"));
  if (object == 0) throw CmdFailed();
  return object;
}

}  // namespace zemblar

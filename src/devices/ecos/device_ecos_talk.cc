// How an ECoS talks: the reader, one exchange at a time, and the commands built from exchanges.

#include <giomm/error.h>
#include <glibmm/ustring.h>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"
#include "devices/default_device.h"
#include "devices/ecos/device_ecos.h"
#include "devices/ecos/ecos_commands.h"
#include "locomotives/lok.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

/// A read that fails is tried again, but not so soon that nothing else gets a turn.
constexpr auto pause_after_failed_read = 100ms;

/// A command that has no answer by then is told of.
constexpr auto silence_limit = 3s;

std::string value_command(unsigned object, const DecoderUpdate& wanted) {
  if (wanted.mask == DecoderUpdate::speed_bit) return ecos::set_speed(object, wanted.speed);
  if (wanted.mask == DecoderUpdate::direction_bit) {
    return ecos::set_direction(object, wanted.direction);
  }
  const auto fn = DecoderUpdate::function_of(wanted.mask);
  return ecos::set_function(object, fn, wanted.function(fn));
}

Glib::ustring item_name(const DecoderUpdate& wanted) {
  if (wanted.mask == DecoderUpdate::direction_bit) return _("the direction");
  if (wanted.mask != DecoderUpdate::speed_bit) {
    return Glib::ustring::compose(_("function %1"), DecoderUpdate::function_of(wanted.mask));
  }
  if (wanted.speed == DecoderUpdate::emergency_stop) return _("the emergency stop");
  return Glib::ustring::compose(_("speed %1"), wanted.speed);
}

}  // namespace

// --- Reading ---

void ECoS::keep_reading(const Cancel& cancel) {
  const auto alive = liveness();
  ECoSFraming framing;
  is_silent_ = false;
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
  const bool has_room = framing.room() > 0;
  gssize count = -1;
  try {
    // Without room this reads nothing, which is what the end of the connection looks like.
    count = socket->read(framing.tail(), static_cast<gsize>(framing.room()), cancel);
  } catch (const Glib::Error& error) {
    if (!*alive) return false;
    is_silent_ = is_silent_ || error.matches(G_IO_ERROR, G_IO_ERROR_TIMED_OUT);
    if (socket->is_connected()) {
      sleep_for(pause_after_failed_read, cancel);
    } else {
      count = 0;
    }
  }
  if (!*alive || cancel->is_cancelled()) return false;
  if (count == 0) end_reading(has_room);
  if (count > 0) framing.add(static_cast<std::size_t>(count));
  return count != 0;
}

void ECoS::end_reading(bool had_room) {
  if (had_room) {
    const auto* text = is_silent_
                           ? _("%1 does not answer any more: look at its power and its cable.")
                           : _("%1 ended the connection.");
    return give_up(Glib::ustring::compose(text, get_name()));
  }
  const auto why = Glib::ustring::compose(
      dngettext(
          GETTEXT_PACKAGE,
          "%1 sent a message longer than %2 byte, as a station with many locomotives does: its "
          "connection is opened anew. Remove locomotives that you do not need from the station.",
          "%1 sent a message longer than %2 bytes, as a station with many locomotives does: its "
          "connection is opened anew. Remove locomotives that you do not need from the station.",
          ECoSFraming::capacity),
      get_name(), ECoSFraming::capacity);
  give_up(why);
  // To be read when the connection is there again.
  set_status(why);
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
  Exchange exchange{text, Clock::now()};
  exchange_ = &exchange;
  watch_for_silence();
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
  if (link_state().phase == LinkPhase::waiting_for_answer) {
    note_answer();
    if (!*alive) throw DeviceInactiveException();
  }
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
      give_up(Glib::ustring::compose(_("%1 ended the connection."), get_name()));
      throw DeviceInactiveException();
    }
    sent += static_cast<std::size_t>(count);
  }
}

ECoSMsg ECoS::expect_success(const std::string& text) {
  auto answer = command(text);
  refusal_ = {answer.get_status(), readable(answer.get_status_text())};
  if (answer.get_status() != 0) throw CmdFailed();
  return answer;
}

/// "25 (no control)"
Glib::ustring ECoS::refusal_words() const {
  if (refusal_.status == 0) return _("something that is of no use");
  return Glib::ustring::compose("%1 (%2)", refusal_.status, refusal_.text);
}

// --- Answers that do not come ---

// One timer for many commands: it is armed anew only when it has fallen due.
void ECoS::watch_for_silence() {
  if (!silence_.armed()) silence_ = Timeout::once(silence_limit, [this] { look_for_silence(); });
}

void ECoS::look_for_silence() {
  if (!exchange_) return;
  const auto waited = Clock::now() - exchange_->sent;
  if (waited < silence_limit) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(silence_limit - waited);
    silence_ = Timeout::once(left, [this] { look_for_silence(); });
    return;
  }
  set_link(LinkPhase::waiting_for_answer,
           Glib::ustring::compose(
               _("%1 has accepted “%2” and does not answer. Look at the station, or press "
                 "“Reconnect” in its panel."),
               get_name(), exchange_->command),
           exchange_->sent);
}

void ECoS::note_answer() {
  activating() ? set_link_down({}) : set_link(LinkPhase::in_service);
}

// --- What the railway asks for ---

// A failure takes the device out of service while it is still busy: nobody who waits goes on with
// a connection that is of no use.
void ECoS::on_failed_talk() {
  auto why = std::exchange(failure_, {});
  if (why.empty()) why = Glib::ustring::compose(_("%1 is connected anew."), get_name());
  const auto alive = liveness();
  const bool stays = std::exchange(failure_stays_, false);
  give_up(why);
  // To be read when the connection is there again.
  if (stays && *alive) set_status(why);
}

void ECoS::switch_power(bool on) {
  const auto answer = command(on ? ecos::go() : ecos::stop());
  refusal_ = {answer.get_status(), readable(answer.get_status_text())};
  if (answer.get_status() == 0) {
    on ? track_power_is_on() : track_power_is_off();
  } else {
    set_status(Glib::ustring::compose(_("%1 refused to switch the track power: %2."), get_name(),
                                      refusal_words()));
  }
}

void ECoS::set_point(unsigned address, unsigned output, bool on) {
  converse([&] {
    try {
      expect_success(ecos::switch_output(address, output, on));
    } catch (const CmdFailed&) {
      failure_ = Glib::ustring::compose(_("%1 refused to switch output %2 of the accessory decoder "
                                          "%3: %4."),
                                        get_name(), output, address, refusal_words());
      failure_stays_ = true;
      throw;
    }
  });
}

// The newest wish is read only now: others may have gone first.
DecoderUpdate ECoS::deliver(DrivenDecoder& decoder, std::uint32_t item) {
  const auto alive = liveness();
  auto wanted = decoder.state();
  wanted.mask = item;
  const auto address = decoder.get_address();
  const bool number_was_known = objects_.contains(address);
  was_cut_ = false;
  try {
    send_item(address, wanted);
  } catch (const CmdFailed&) {
    // A station that was set up anew knows its locomotives by other numbers, or not at all.
    if (number_was_known && refusal_.status == ecos::unknown_object) {
      objects_.clear();
      refused_.suspect(address, wanted);
      throw;
    }
    objects_.erase(address);
    note_refusal(address, wanted, refused_.next_pause(address, wanted),
                 _("%1 refused %2 of %3: %4. It is tried again in %5 s."));
    throw;
  } catch (...) {
    if (!*alive) throw;
    // A stop is not kept back: it may be the link that is dead, and not this command.
    if (std::exchange(was_cut_, false) && !wanted.is_stop()) {
      note_refusal(address, wanted, RefusedItems::first_pause,
                   _("%1 did not answer to %2 of %3. It is tried again in %5 s."));
    } else {
      refused_.suspect(address, wanted);
    }
    throw;
  }
  refused_.accept(address, item);
  return wanted;
}

void ECoS::send_item(Address address, const DecoderUpdate& wanted) {
  const auto object = object_id(address);
  expect_success(ecos::request_control(object));
  expect_success(value_command(object, wanted));
  expect_success(ecos::release_control(object));
}

// --- Refusals ---

bool ECoS::withholds(DrivenDecoder& decoder, std::uint32_t item) {
  return refused_.withhold(decoder, item);
}

unsigned ECoS::rank(const DrivenDecoder& decoder) const {
  if (refused_.refuses_all(decoder)) return ~0u;
  return 2 * CommandStation::rank(decoder) + (refused_.suspects(decoder) ? 1 : 0);
}

/// `text` has places for the station, the item, the locomotive, the station's words and the time.
void ECoS::note_refusal(Address address, const DecoderUpdate& sent, std::chrono::seconds pause,
                        const char* text) {
  failure_ = Glib::ustring::compose(text, get_name(), item_name(sent), locomotive_name(address),
                                    refusal_words(), pause.count());
  refused_.refuse(address, sent, pause, failure_);
}

Glib::ustring ECoS::locomotive_name(Address address) const {
  const auto* lok = find_lok(address);
  if (!lok && layout()) lok = layout()->get_default_device().find_lok(address);
  return lok ? lok->get_name()
             : Glib::ustring::compose(_("the locomotive with address %1"), address.get_addr());
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

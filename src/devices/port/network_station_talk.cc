// How a station talks: the reader, one exchange at a time, and the conversations built from
// exchanges.

#include <giomm/error.h>
#include <glibmm/ustring.h>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"
#include "devices/default_device.h"
#include "devices/port/network_station.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

/// A read that fails is tried again, but not so soon that nothing else gets a turn.
constexpr auto pause_after_failed_read = 100ms;

/// A command without an answer is shown in the link state after this.
constexpr auto silence_limit = 3s;

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

void NetworkStation::keep_reading(const Cancel& cancel) {
  const auto alive = liveness();
  const auto reader = make_reader();
  is_silent_ = false;
  while (read_some(*reader, cancel)) {
    while (reader->pass_message()) {
      // A resumed fiber may have ended the connection or the device.
      if (!*alive || cancel->is_cancelled()) return;
    }
  }
}

/// False when there is nothing more to read for this fiber.
bool NetworkStation::read_some(Reader& reader, const Cancel& cancel) {
  const auto alive = liveness();
  const auto socket = socket_;
  gssize count = -1;
  try {
    // Without room this reads nothing, which is what the end of the connection looks like.
    count = socket->read(reader.tail(), static_cast<gsize>(reader.room()), cancel);
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
  if (count == 0) end_reading(reader);
  if (count > 0) reader.add(static_cast<std::size_t>(count));
  return count != 0;
}

void NetworkStation::end_reading(const Reader& reader) {
  if (reader.room() > 0) {
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
          reader.capacity()),
      get_name(), reader.capacity());
  give_up(why);
  // To be read when the connection is there again.
  set_status(why);
}

// --- One exchange ---

void NetworkStation::wake_exchange() {
  auto* waiter = std::exchange(exchange_->waiter, nullptr);
  if (waiter) fiber::resume(waiter, 0);
}

void NetworkStation::cut_exchange() {
  if (!exchange_) return;
  exchange_->cut = true;
  wake_exchange();
}

NetworkStation::Exchange* NetworkStation::waiting_exchange() const {
  return exchange_ && !exchange_->answered ? exchange_ : nullptr;
}

void NetworkStation::answered() {
  exchange_->answered = true;
  wake_exchange();
}

void NetworkStation::run(Exchange& exchange, const std::string& bytes) {
  const auto alive = liveness();
  if (!active()) throw DeviceInactiveException();
  // The answer may be read before the send is reported complete, so it is expected from here on.
  exchange.sent = Clock::now();
  exchange_ = &exchange;
  watch_for_silence();
  const auto forget = [&] {
    if (*alive) exchange_ = nullptr;
  };
  try {
    send(bytes);
    if (!exchange.answered && !exchange.cut) {
      fiber::yield([&exchange](fiber* f) { exchange.waiter = f; });
    }
  } catch (...) {
    forget();
    throw;
  }
  forget();
  if (!*alive || exchange.cut) throw DeviceInactiveException();
  if (link_state().phase != LinkPhase::waiting_for_answer) return;
  note_answer();
  if (!*alive) throw DeviceInactiveException();
}

void NetworkStation::send(const std::string& bytes) {
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

// --- Answers that do not come ---

// One timer for many commands: it is armed anew only when it has fallen due.
void NetworkStation::watch_for_silence() {
  if (!silence_.armed()) silence_ = Timeout::once(silence_limit, [this] { look_for_silence(); });
}

void NetworkStation::look_for_silence() {
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

void NetworkStation::note_answer() {
  activating() ? set_link_down({}) : set_link(LinkPhase::in_service);
}

// --- What the railway asks for ---

// A failure takes the device out of service while it is still busy, so that no waiting conversation
// goes on with a useless connection.
void NetworkStation::on_failed_talk() {
  auto why = std::exchange(failure_, {});
  if (why.empty()) why = Glib::ustring::compose(_("%1 is connected anew."), get_name());
  const auto alive = liveness();
  const bool stays = std::exchange(failure_stays_, false);
  give_up(why);
  // To be read when the connection is there again.
  if (stays && *alive) set_status(why);
}

void NetworkStation::switch_power(bool on) {
  if (send_power(on)) {
    on ? track_power_is_on() : track_power_is_off();
  } else {
    set_status(Glib::ustring::compose(_("%1 refused to switch the track power: %2."), get_name(),
                                      refusal_words()));
  }
}

void NetworkStation::set_point(unsigned address, unsigned output, bool on) {
  converse([&] {
    try {
      send_output(address, output, on);
    } catch (const CmdFailed&) {
      failure_ = Glib::ustring::compose(_("%1 refused to switch output %2 of the accessory decoder "
                                          "%3: %4."),
                                        get_name(), output, address, refusal_words());
      failure_stays_ = true;
      throw;
    }
  });
}

// Reads the decoder's wish only now: other conversations may have come first.
DecoderUpdate NetworkStation::deliver(DrivenDecoder& decoder, std::uint32_t item) {
  const auto alive = liveness();
  auto wanted = decoder.state();
  wanted.mask = item;
  const auto address = decoder.get_address();
  was_cut_ = false;
  try {
    send_item(address, wanted);
  } catch (const CmdFailed&) {
    if (forget_after_refusal(address)) {
      refused_.suspect(address, wanted);
    } else {
      note_refusal(address, wanted, refused_.next_pause(address, wanted),
                   _("%1 refused %2 of %3: %4. It is tried again in %5 s."));
    }
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

// --- Refusals ---

bool NetworkStation::withholds(DrivenDecoder& decoder, std::uint32_t item) {
  return refused_.withhold(decoder, item);
}

unsigned NetworkStation::rank(const DrivenDecoder& decoder) const {
  if (refused_.refuses_all(decoder)) return ~0u;
  return 2 * CommandStation::rank(decoder) + (refused_.suspects(decoder) ? 1 : 0);
}

/// `text` has places for the station, the item, the locomotive, the station's words and the time.
void NetworkStation::note_refusal(Address address, const DecoderUpdate& sent,
                                  std::chrono::seconds pause, const char* text) {
  failure_ = Glib::ustring::compose(text, get_name(), item_name(sent), locomotive_name(address),
                                    refusal_words(), pause.count());
  refused_.refuse(address, sent, pause, failure_);
}

Glib::ustring NetworkStation::locomotive_name(Address address) const {
  auto* lok = find_lok(address);
  if (!lok && layout()) lok = layout()->get_default_device().find_lok(address);
  return lok ? as_object(*lok).get_name()
             : Glib::ustring::compose(_("the locomotive with address %1"), address.get_addr());
}

}  // namespace zemblar

// The link state of a Tessara device.

#include "core/i18n.h"
#include "devices/tessara/device_tessara.h"
#include "devices/tessara/device_tessara_bus.h"

namespace zemblar {
namespace {

/// Time without an answer until it is reported.
constexpr std::chrono::seconds answer_limit(1);

}  // namespace

bool DeviceTessara::was_in_service() const {
  const auto phase = link_state().phase;
  return phase == LinkPhase::in_service || phase == LinkPhase::waiting_for_answer ||
         phase == LinkPhase::lost;
}

// Sets the link state of a device that was just read from a file.
void DeviceTessara::note_origin() {
  if (!bus_ && serial_nr_.empty()) {
    set_link(LinkPhase::not_set_up,
             Glib::ustring::compose(_("%1 has no serial number by which its hardware could be "
                                      "known: delete it, and plug the hardware in."),
                                    get_name()));
  } else {
    set_link(LinkPhase::looking_for_hardware, bus_ ? why_no_bus() : why_not_plugged_in());
  }
}

Glib::ustring DeviceTessara::why_not_plugged_in() const {
  return Glib::ustring::compose(_("%1 is not plugged in."), get_name());
}

Glib::ustring DeviceTessara::why_no_bus() const {
  return Glib::ustring::compose(_("%1 waits until its bus is in service."), get_name());
}

Glib::ustring DeviceTessara::why_no_end() const {
  return Glib::ustring::compose(_("%1 does not come to an end with an answer."), get_name());
}

Glib::ustring DeviceTessara::why_no_answer() const {
  if (!bus_) return Glib::ustring::compose(_("%1 does not answer: has it power?"), get_name());
  if (bus_->silent_since_) return {};
  return Glib::ustring::compose(_("%1 does not answer at address %2 of %3."), get_name(),
                                static_cast<unsigned>(address_), bus_->get_name());
}

// A device that is not in a layout yet reports the reason by an exception instead.
void DeviceTessara::report_down(const Glib::ustring& why) {
  set_link_down(get_parent() ? why : Glib::ustring());
}

void DeviceTessara::note_answer() {
  silent_since_.reset();
  if (active() && !activating()) set_link(LinkPhase::in_service);
}

void DeviceTessara::note_silence() {
  if (!silent_since_) silent_since_ = Clock::now();
  if (Clock::now() - *silent_since_ >= answer_limit) note_late_answer(*silent_since_);
}

Timeout DeviceTessara::when_answer_is_late() {
  return Timeout::once(answer_limit, [this, alive = liveness(), asked = Clock::now()] {
    if (*alive) note_late_answer(asked);
  });
}

void DeviceTessara::note_late_answer(Clock::time_point asked) {
  if (active() && !activating()) set_link(LinkPhase::waiting_for_answer, why_no_answer(), asked);
}

// Does nothing if the port or the bus is lost, which is reported elsewhere.
void DeviceTessara::note_failed_start(const TessaraCmdFailed& failure) {
  if (bus_ ? !bus_->active() : !hold_ || hold_.port()->is_lost()) return;
  const bool no_end = hold_ && dynamic_cast<const TessaraNoEnd*>(&failure);
  report_down(no_end ? why_no_end() : why_no_answer());
}

void DeviceTessara::note_absence() {
  if (active()) return;
  set_link(was_in_service() ? LinkPhase::lost : LinkPhase::looking_for_hardware, why_no_answer());
}

void DeviceTessara::note_end_of_bus() {
  if (was_in_service()) return set_link(LinkPhase::lost);
  set_link(LinkPhase::looking_for_hardware, why_no_bus());
}

}  // namespace zemblar

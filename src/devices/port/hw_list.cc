#include "devices/port/hw_list.h"

#include <glibmm/main.h>

#include <algorithm>

#include "core/layout.h"

namespace zemblar {
namespace {

/// Time after which hardware with a lost line is given up.
constexpr std::chrono::seconds rescan_delay(2);

std::unique_ptr<HWSource>& chosen_source() {
  static std::unique_ptr<HWSource> source;
  return source;
}

std::vector<HWList::Kind>& kinds() {
  static std::vector<HWList::Kind> all;
  return all;
}

/// The kind with the highest score; null if none fits.
const HWList::Kind* best_for(const HWDevice& record) {
  const HWList::Kind* best = nullptr;
  int most = 0;
  for (const auto& kind : kinds()) {
    const int score = kind.score(record);
    if (score <= most) continue;
    best = &kind;
    most = score;
  }
  return best;
}

HWList* the_list = nullptr;  // made on first use

// Ports of the former document's devices are free now: the list offers them again. After New it
// waits for the main loop, because the devices let go of their ports there.
const bool follows_documents = [] {
  Layout::signal_replaced().connect([] { HWList::get().refresh(); });
  Layout::signal_emptied().connect(
      [] { Glib::signal_idle().connect_once([] { HWList::get().refresh(); }); });
  return true;
}();

}  // namespace

HWList::Kind::Registration::Registration(const Kind& kind) {
  kinds().push_back(kind);
}

// The rescan removes the hardware of the former source.
void HWList::use_source(std::unique_ptr<HWSource> source) {
  if (!the_list) {
    chosen_source() = std::move(source);
    return;
  }
  the_list->follow(std::move(source));
  the_list->rescan();
}

// Scans later, because the first scan takes some milliseconds, for which the first window should
// not wait. The list is never destroyed: ports close when the process ends.
HWList& HWList::get() {
  if (!the_list) {
    the_list = new HWList(chosen_source() ? std::move(chosen_source()) : make_udev_source());
    Glib::signal_idle().connect_once(sigc::mem_fun(*the_list, &HWList::rescan));
  }
  return *the_list;
}

HWList::HWList(std::unique_ptr<HWSource> source) {
  follow(std::move(source));
}

void HWList::follow(std::unique_ptr<HWSource> source) {
  source_ = std::move(source);
  source_->signal_changed().connect(sigc::mem_fun(*this, &HWList::rescan));
}

HWList::~HWList() {
  for (const auto& [name, hardware] : attached_) hardware->remove();
}

void HWList::refresh() {
  rescan();
  // A device that takes a port may make the list scan again.
  std::vector<AttachedHardware*> all;
  for (const auto& [name, hardware] : attached_) all.push_back(hardware.get());
  for (auto* hardware : all) {
    const bool still_there = std::ranges::any_of(
        attached_, [hardware](const auto& entry) { return entry.second.get() == hardware; });
    if (still_there) hardware->offer();
  }
}

void HWList::rescan() {
  const auto present = source_->list();
  const bool some_gone = drop_all_but(present);
  bool some_new = false;
  for (const auto& record : present) {
    if (!records_.try_emplace(record.object_name, record).second) continue;
    add(record);
    some_new = true;
  }
  if (some_gone || some_new) signal_changed_.emit();
}

// Takes the hardware out of the list first, because a handler of its removal may look at the list.
bool HWList::drop_all_but(const std::vector<HWDevice>& present) {
  std::vector<std::unique_ptr<AttachedHardware>> gone;
  const auto count = std::erase_if(records_, [&](const auto& entry) {
    const auto& [name, record] = entry;
    const auto attached = attached_.find(name);
    const bool has_line = attached == attached_.end() || !attached->second->is_lost();
    if (has_line && std::ranges::find(present, record) != present.end()) return false;
    if (attached == attached_.end()) return true;
    gone.push_back(std::move(attached->second));
    attached_.erase(attached);
    return true;
  });
  for (const auto& hardware : gone) hardware->remove();
  return count > 0;
}

// Scans later: usually the system is about to report the removal, and a line that was only
// disturbed works again.
void HWList::rescan_soon() {
  if (!rescan_.armed()) rescan_ = Timeout::once(rescan_delay, [this] { rescan(); });
}

void HWList::add(const HWDevice& record) {
  const auto* kind = best_for(record);
  if (!kind) return;
  auto hardware = kind->attach(record, source_->line_to(record));
  auto* attached = hardware.get();
  attached->signal_lost().connect(sigc::mem_fun(*this, &HWList::rescan_soon));
  attached_[record.object_name] = std::move(hardware);
  attached->offer();
}

}  // namespace zemblar

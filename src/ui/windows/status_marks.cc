#include "ui/windows/status_marks.h"

#include <glibmm/main.h>
#include <gtkmm/menu.h>
#include <gtkmm/menuitem.h>
#include <gtkmm/separator.h>

#include <algorithm>

#include "core/i18n.h"
#include "core/recovery_copy.h"
#include "core/status.h"
#include "devices/device.h"
#include "devices/track_power.h"
#include "locomotives/lok.h"
#include "track/train_condition.h"
#include "ui/status/status_looks.h"
#include "ui/status/stop_all.h"
#include "ui/throttle/lok_controller.h"
#include "ui/toolkit/popup.h"
#include "ui/windows/track_editor.h"

namespace zemblar {
namespace {

constexpr int gap = 2;
constexpr int full_support = 2;

/// With more devices than this, those below another device are shown only while they are not in
/// service.
constexpr std::size_t most_devices = 12;

bool is_well_below_another(const Device* device) {
  return device->get_parent() != &Layout::get().get_devices() &&
         device->link_state().phase == LinkPhase::in_service;
}

/// The devices that have a link; inputs of a reader have none.
std::vector<Device*> linked_devices() {
  std::vector<Device*> devices;
  for_each_device(Layout::get().get_devices(), [&devices](Device& device) {
    if (device.supports("Occupancy") != full_support) devices.push_back(&device);
  });
  if (devices.size() > most_devices) std::erase_if(devices, is_well_below_another);
  return devices;
}

std::vector<Device*> stations() {
  return power_stations(Layout::get().get_devices());
}

void show_device(Device& device) {
  TrackEditor::show_object(device);
}

void show_throttle(Lok& lok) {
  LokController::open(&lok);
}

StatusMark::Look stop_look() {
  return {StatusShape::Kind::stop, _("Stop All"), _("Stop All Trains"),
          _("Emergency stop of all locomotives (Ctrl+Shift+Space). Once more within 2 seconds "
            "switches the track power off.")};
}

}  // namespace

StatusMarks::DeviceMark::DeviceMark(Device& shown) : device(&shown) {
  mark.signal_clicked().connect([this] {
    if (device) show_device(*device);
  });
}

StatusMarks::StatusMarks() : Gtk::HBox(false, gap) {
  pack_start(*Gtk::manage(new Gtk::VSeparator), false, false, gap);
  add_mark(held_);
  add_mark(unplaced_);
  add_mark(power_);
  pack_start(device_row_, false, false);
  add_mark(file_);
  pack_start(*Gtk::manage(new Gtk::VSeparator), false, false, gap);
  add_mark(stop_);
  show_all_children();
  for (auto* mark : {&held_, &unplaced_}) {
    mark->set_no_show_all();
    mark->hide();
  }
  power_.signal_clicked().connect([this] {
    if (stations().empty()) return TrackEditor::show_object(Layout::get().get_devices());
    choose(power_, stations(), &show_device);
  });
  held_.signal_clicked().connect(
      [this] { choose(held_, held_trains(Layout::get().get_loks()), &show_throttle); });
  unplaced_.signal_clicked().connect(
      [this] { choose(unplaced_, unplaced_trains(Layout::get().get_loks()), &show_throttle); });
  file_.signal_clicked().connect([] { TrackEditor::show_object(Layout::get()); });
  stop_.set_can_focus(false);
  stop_.show_look(stop_look());
  stop_.signal_clicked().connect([] { StopAll::get().press(); });
  signal_status_changed().connect(sigc::mem_fun(*this, &StatusMarks::refresh_later));
  if (auto* copies = RecoveryCopy::get()) {
    unsaved_changed_ = copies->signal_unsaved_changed().connect([this] { refresh_later(); });
  }
  follower_ = std::make_unique<LayoutFollower>(
      [this](Layout& layout, auto& connections) { attach(layout, connections); });
}

void StatusMarks::add_mark(StatusMark& mark) {
  pack_start(mark, false, false);
}

std::vector<StatusMark*> StatusMarks::devices() const {
  std::vector<StatusMark*> marks;
  for (const auto& entry : devices_) marks.push_back(&entry->mark);
  return marks;
}

void StatusMarks::attach(Layout& layout, LayoutFollower::Connections& connections) {
  connections.emplace_back(layout.signal_pulse().connect([this] { refresh(); }));
  refresh_later();
}

// Several messages in a row cause one update.
void StatusMarks::refresh_later() {
  if (refresh_later_.connected()) return;
  refresh_later_ = Glib::signal_idle().connect([this] {
    refresh();
    return false;
  });
}

void StatusMarks::refresh() {
  const auto& layout = Layout::get();
  if (layout.is_emptying()) return;
  power_.show_look(power_look());
  refresh_devices();
  const auto held = held_trains(layout.get_loks());
  if (!held.empty()) held_.show_look(held_look(held));
  held_.set_visible(!held.empty());
  const auto unplaced = unplaced_trains(layout.get_loks());
  if (!unplaced.empty()) unplaced_.show_look(unplaced_look(unplaced));
  unplaced_.set_visible(!unplaced.empty());
  file_.show_look(file_look());
}

void StatusMarks::refresh_devices() {
  const auto devices = linked_devices();
  const auto is_of = [](const Device* device, const auto& entry) {
    return entry->device.get() == device;
  };
  if (!std::ranges::equal(devices, devices_, is_of)) make_device_marks(devices);
  for (const auto& entry : devices_) entry->mark.show_look(device_look(*entry->device));
}

void StatusMarks::make_device_marks(const std::vector<Device*>& devices) {
  devices_.clear();
  for (auto* device : devices) {
    auto& entry = *devices_.emplace_back(std::make_unique<DeviceMark>(*device));
    device_row_.pack_start(entry.mark, false, false);
    entry.mark.show();
  }
}

template <typename T>
void StatusMarks::choose(StatusMark& mark, const std::vector<T*>& objects,
                         void (*action)(T& object)) {
  if (objects.empty()) return;
  if (objects.size() == 1) return action(*objects.front());
  menu_ = std::make_unique<Gtk::Menu>();
  for (auto* object : objects) {
    auto* item = Gtk::manage(new Gtk::MenuItem(object->get_name()));
    item->signal_activate().connect([chosen = std::make_shared<ObjectRef<T>>(object), action] {
      if (*chosen) action(**chosen);
    });
    menu_->append(*item);
  }
  menu_->show_all();
  drop_when_hidden(menu_, drop_menu_);
  if (!popup_below(*menu_, mark)) menu_.reset();
}

}  // namespace zemblar

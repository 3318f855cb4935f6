#include "ui/panels/tessara_scan_dialog.h"

#include <atkmm/object.h>
#include <gtkmm/button.h>
#include <gtkmm/stock.h>

#include <map>
#include <utility>

#include "core/i18n.h"

namespace zemblar {
namespace {

constexpr int margin = 12;
constexpr int spacing = 8;
constexpr int width = 360;

std::map<const DeviceTessaraBus*, TessaraScanDialog*>& dialogs() {
  static std::map<const DeviceTessaraBus*, TessaraScanDialog*> open;
  return open;
}

}  // namespace

void TessaraScanDialog::run(DeviceTessaraBus& bus, Gtk::Window* parent) {
  auto*& dialog = dialogs()[&bus];
  if (!dialog) dialog = new TessaraScanDialog(bus);
  if (parent) dialog->set_transient_for(*parent);
  dialog->begin();
  dialog->present();
}

TessaraScanDialog::TessaraScanDialog(DeviceTessaraBus& bus)
    : Gtk::Dialog(_("Tessara Scan")), bus_(&bus) {
  build();
  bus.property_scan_progress().signal_changed().connect(
      sigc::mem_fun(*this, &TessaraScanDialog::follow_progress));
  bus.property_scanning().signal_changed().connect(
      sigc::mem_fun(*this, &TessaraScanDialog::follow_scan));
  bus.signal_child_added().connect(sigc::mem_fun(*this, &TessaraScanDialog::note_found));
  bus.signal_deleted().connect(sigc::mem_fun(*this, &TessaraScanDialog::close));
}

TessaraScanDialog::~TessaraScanDialog() {
  std::erase_if(dialogs(), [this](const auto& entry) { return entry.second == this; });
}

void TessaraScanDialog::build() {
  set_border_width(margin / 2);
  set_default_size(width, -1);
  auto& box = *get_vbox();
  box.set_spacing(spacing);
  bar_.get_accessible()->set_name(_("Progress of the scan"));
  for (auto* label : {&state_, &result_}) {
    label->set_alignment(0, 0.5);
    label->set_line_wrap();
    label->set_width_chars(40);
  }
  box.pack_start(state_, Gtk::PACK_SHRINK);
  box.pack_start(bar_, Gtk::PACK_SHRINK);
  box.pack_start(result_, Gtk::PACK_SHRINK);
  button_ = add_button(Gtk::Stock::CANCEL, Gtk::RESPONSE_CLOSE);
  box.show_all();
}

void TessaraScanDialog::begin() {
  if (!bus_ || bus_->get_scanning()) return;
  found_.clear();
  show_found();
  bus_->set_scanning(true);
}

void TessaraScanDialog::close() {
  response(Gtk::RESPONSE_CLOSE);
}

// Also called when Escape or the window manager closes the dialog.
void TessaraScanDialog::on_response(int /*response*/) {
  if (std::exchange(closed_, true)) return;
  std::erase_if(dialogs(), [this](const auto& entry) { return entry.second == this; });
  if (bus_) bus_->set_scanning(false);
  bus_.reset();
  hide();
  Glib::signal_idle().connect_once([this] { delete this; });
}

void TessaraScanDialog::follow_progress() {
  if (bus_) bar_.set_fraction(bus_->get_scan_progress());
}

void TessaraScanDialog::follow_scan() {
  if (!bus_) return;
  const bool scanning = bus_->get_scanning();
  state_.set_text(scanning
                      ? Glib::ustring::compose(_("Looking for devices on %1…"), bus_->get_name())
                      : Glib::ustring::compose(_("%1 has been searched."), bus_->get_name()));
  bar_.set_visible(scanning);
  button_->set_label(scanning ? Gtk::Stock::CANCEL.id : Gtk::Stock::CLOSE.id);
  show_found();
}

void TessaraScanDialog::note_found(Object* device) {
  found_.push_back(device->get_name());
  show_found();
}

void TessaraScanDialog::show_found() {
  const bool scanning = bus_ && bus_->get_scanning();
  if (found_.empty()) {
    result_.set_text(scanning ? _("Nothing new so far.") : _("There is nothing new on it."));
    return;
  }
  Glib::ustring names;
  for (const auto& name : found_) names += "\n" + name;
  result_.set_text(_("Found:") + names);
}

}  // namespace zemblar

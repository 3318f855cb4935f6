#include "ui/panels/dummy_railcom_reader_properties.h"

#include "core/i18n.h"
#include "devices/railcom/dummy_railcom_reader.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

const PanelRegistration<DeviceDummyRailComReader, DeviceDummyRailComReaderProperties> registration;

}  // namespace

// --- A row of positions ---

PatternRow::PatternRow(const Glib::ustring& name) : others_(false, 4) {
  unsigned number = 0;
  for (auto& position : positions_) {
    position.set_label(Glib::ustring::format(++number));
    position.get_accessible()->set_name(Glib::ustring::compose("%1 %2", name, number));
    if (number > 1) others_.pack_start(position, false, false);
  }
}

std::uint8_t PatternRow::get_pattern() const {
  unsigned pattern = 0;
  for (std::size_t i = 0; i < positions_.size(); ++i) {
    if (positions_[i].get_active()) pattern |= 1u << i;
  }
  return static_cast<std::uint8_t>(pattern);
}

void PatternRow::show_pattern(std::uint8_t pattern) {
  for (std::size_t i = 0; i < positions_.size(); ++i) {
    show_active(positions_[i], (pattern >> i & 1) != 0);
  }
}

void PatternRow::connect_toggled(const sigc::slot<void>& slot) {
  for (auto& position : positions_) position.signal_toggled().connect(slot);
}

void PatternRow::add_to(Form& form, const Glib::ustring& label, const Glib::ustring& tooltip) {
  for (auto& position : positions_) position.set_tooltip_text(tooltip);
  form.add_row(label, positions_.front(), others_);
}

// --- The panel ---

DeviceDummyRailComReaderProperties::DeviceDummyRailComReaderProperties(
    DeviceDummyRailComReader& reader, const Labels& labels)
    : Form(labels),
      reader_(&reader),
      name_(reader),
      device_(driver_choices("DCC")),
      long_(_("_Long"), true),
      occupied_(_("Occupied")),
      railcom_(_("RailCom")) {
  add_rows();
  follow();
  connect();
}

void DeviceDummyRailComReaderProperties::add_rows() {
  add_row(_("_Name:"), name_);
  add_row(_("_DCC Device:"), device_);
  add_row(_("_Address:"), address_, long_);
  occupied_.add_to(*this, _("_Occupied:"),
                   _("What is occupied moves on by one input each second, "
                     "and from the last to the first"));
  railcom_.add_to(*this, _("_RailCom:"), _("Where the locomotive of this address is reported"));
  device_.explain(_("Where the locomotive is looked up by its address"));
  long_.set_tooltip_text(_("A long address below 128 differs from the short one of that number"));
}

void DeviceDummyRailComReaderProperties::connect() {
  // The signals belong to widgets of this panel, so no slot outlives it.
  const auto when = [this](auto action) {
    return [this, action] {
      if (!updating_ && reader_) action(*reader_);
    };
  };
  using Reader = DeviceDummyRailComReader;
  device_.property_object().signal_changed().connect(when([this](Reader& reader) {
    reader.set_dcc_device(dynamic_cast<Device*>(device_.get_object()));
  }));
  address_.property_address().signal_changed().connect(
      when([this](Reader& reader) { reader.set_address(address_.get_address()); }));
  long_.signal_toggled().connect(when([this](Reader&) { address_.set_long(long_.get_active()); }));
  occupied_.connect_toggled(
      when([this](Reader& reader) { reader.set_pattern(occupied_.get_pattern()); }));
  railcom_.connect_toggled(
      when([this](Reader& reader) { reader.set_railcom(railcom_.get_pattern()); }));

  const auto follow = sigc::mem_fun(*this, &DeviceDummyRailComReaderProperties::follow);
  reader_->property_pattern().signal_changed().connect(follow);
  reader_->property_railcom().signal_changed().connect(follow);
  reader_->property_dcc_device().signal_changed().connect(follow);
  reader_->property_address().signal_changed().connect(follow);
}

void DeviceDummyRailComReaderProperties::follow() {
  const UpdateGuard scope(updating_);
  device_.set_object(reader_->get_dcc_device());
  address_.set_address(reader_->get_address());
  show_active(long_, reader_->get_address().is_long());
  occupied_.show_pattern(reader_->get_pattern());
  railcom_.show_pattern(reader_->get_railcom());
}

}  // namespace zemblar

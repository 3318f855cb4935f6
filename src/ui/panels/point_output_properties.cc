#include "ui/panels/point_output_properties.h"

#include "core/i18n.h"
#include "track/address_users.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

using Type = PointOutput::Type;

constexpr int type_count = 4;

/// The devices that support the type.
ObjectChoices devices_for(Type type) {
  auto choices = driver_choices(required_feature(type));
  if (type == Type::Servo) choices.how_to_make = _("No device of this program moves servos yet");
  return choices;
}

void set_up(Gtk::SpinButton& spin, Type type) {
  const auto range = output_range(type);
  spin.set_digits(0);
  spin.set_numeric();
  spin.set_increments(1, 5);
  spin.set_range(range.lowest, range.highest);
}

}  // namespace

Glib::ustring output_text(const PointOutput& output) {
  const auto address = output.get_address().get_addr();
  switch (output.get_type()) {
    case Type::Basic:
      return Glib::ustring::compose(_("Address %1, output %2"), address, output.get_output());
    case Type::Extended:
      return Glib::ustring::compose(_("Address %1"), address);
    case Type::Function:
      return Glib::ustring::compose(_("Address %1, function %2"), address, output.get_output());
    case Type::Servo:
      return _("Servo");
  }
  return {};
}

PointOutputProperties::PointOutputProperties(const Glib::RefPtr<PointOutput>& output,
                                             const Glib::ustring& heading, const Labels& labels)
    : Form(labels),
      output_(output),
      device_(devices_for(output->get_type())),
      long_(_("Lo_ng"), true) {
  set_border_width(0);
  for (int i = 0; i < type_count; ++i) type_.append(display_name(static_cast<Type>(i)));
  set_up(number_, Type::Basic);
  set_up(function_, Type::Function);
  add_rows(heading);
  follow();
  connect();
}

void PointOutputProperties::add_rows(const Glib::ustring& heading) {
  add_heading(heading);
  add_row(_("T_ype:"), type_);
  add_row(_("_Device:"), device_);
  add_row(_("Addr_ess:"), address_, long_);
  note_ = std::make_unique<AddressNote>(
      *this,
      AddressNote::Source{
          .field = address_,
          .address = [this] { return output_->get_address(); },
          .others = [this] { return others_at(*output_.operator->()); },
          .take_next_free = [this] { address_.set_address(next_free(*output_.operator->())); }});
  add_row(_("O_utput:"), number_, _("(1 to 4)"));
  add_row(_("_Function:"), function_, _("(0 to 28)"));
  type_.set_tooltip_text(
      _("A basic accessory has two coils or positions, an extended one shows one of 64 aspects, a "
        "locomotive function is on or off. Servos are not commanded yet"));
  device_.explain(
      _("What sends the command. (Default) is all command stations that are marked for default "
        "use"));
  long_.set_tooltip_text(_("A long address below 128 differs from the short one of that number"));
}

void PointOutputProperties::connect() {
  // The signals belong to widgets of this form, so no slot outlives it.
  const auto on = [this](auto signal, auto action) {
    signal.connect([this, action] {
      if (!updating_) action(*output_.operator->());
    });
  };
  const auto on_number = [&on](Gtk::SpinButton& spin) {
    on(spin.signal_value_changed(), [&spin](PointOutput& output) {
      output.set_output(static_cast<unsigned>(spin.get_value_as_int()));
    });
  };
  on(type_.signal_changed(), [this](PointOutput& output) {
    const int row = type_.get_active_row_number();
    if (row >= 0) output.set_type(static_cast<Type>(row));
  });
  on(device_.property_object().signal_changed(), [this](PointOutput& output) {
    output.set_device(dynamic_cast<Device*>(device_.get_object()));
  });
  on(address_.property_address().signal_changed(),
     [this](PointOutput& output) { output.set_address(address_.get_address()); });
  on(long_.signal_toggled(), [this](PointOutput&) { address_.set_long(long_.get_active()); });
  on_number(number_);
  on_number(function_);
  output_->signal_changed().connect(sigc::mem_fun(*this, &PointOutputProperties::follow));
}

void PointOutputProperties::follow() {
  const UpdateGuard scope(updating_);
  const auto type = output_->get_type();
  type_.set_active(static_cast<int>(type));
  device_.set_choices(devices_for(type));
  device_.set_object(output_->get_device());
  follow_address();
  show_value(type == Type::Function ? function_ : number_, output_->get_output());
  show_row(number_, type == Type::Basic);
  show_row(function_, type == Type::Function);
  note_->refresh();
}

void PointOutputProperties::follow_address() {
  const auto type = output_->get_type();
  show_row(address_, type != Type::Servo);
  long_.set_visible(type == Type::Function);
  long_.set_no_show_all(type != Type::Function);
  if (type == Type::Servo) return;
  address_.set_kind(address_kind(type));
  address_.set_address(output_->get_address());
  show_active(long_, output_->get_address().is_long());
}

}  // namespace zemblar

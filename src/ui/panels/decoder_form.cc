#include "ui/panels/decoder_form.h"

#include "core/i18n.h"
#include "track/address_users.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

constexpr int type_count = 4;

}  // namespace

DecoderForm::DecoderForm(const Glib::RefPtr<Decoder>& decoder, const Glib::ustring& heading,
                         const Labels& labels)
    : Form(labels),
      decoder_(decoder),
      long_(_("Lo_ng"), true),
      device_(driver_choices("DCC")),
      enabled_(_("_Enable Speed/Direction Commands"), true),
      reverse_(_("_Reverse"), true) {
  set_border_width(0);
  for (int i = 0; i < type_count; ++i) type_.append(display_name(static_cast<DecoderType>(i)));
  ratio_.set_digits(3);
  ratio_.set_numeric();
  ratio_.set_increments(0.01, 0.1);
  ratio_.set_range(0, Decoder::max_speed_ratio);
  add_rows(heading);
  follow();
  connect();
}

void DecoderForm::add_rows(const Glib::ustring& heading) {
  add_heading(heading);
  add_row(_("T_ype:"), type_);
  add_row(_("_Address:"), address_, long_);
  note_ = std::make_unique<AddressNote>(
      *this,
      AddressNote::Source{
          .field = address_,
          .address = [this] { return decoder_->get_address(); },
          .others = [this] { return others_at(*decoder_.operator->()); },
          .take_next_free = [this] { address_.set_address(next_free(*decoder_.operator->())); }});
  add_row(_("_Device:"), device_);
  add_field(enabled_);
  add_row(_("_Speed:"), ratio_, _("× wanted speed"));
  add_field(reverse_);
  long_.set_tooltip_text(_("A long address below 128 differs from the short one of that number"));
  device_.explain(
      _("What drives this decoder. (Default) is all command stations that "
        "are marked for default use"));
  ratio_.set_tooltip_text(_("Makes locomotives that are coupled together run equally fast"));
  reverse_.set_tooltip_text(_("For a decoder that is built in the other way round"));
}

void DecoderForm::connect() {
  // The signals belong to widgets of this form, so no slot outlives it.
  const auto on = [this](auto signal, auto action) {
    signal.connect([this, action] {
      if (!updating_) action(*decoder_.operator->());
    });
  };
  on(type_.signal_changed(), [this](Decoder& decoder) {
    const int row = type_.get_active_row_number();
    if (row >= 0) decoder.set_type(static_cast<DecoderType>(row));
  });
  on(address_.property_address().signal_changed(),
     [this](Decoder& decoder) { decoder.set_address(address_.get_address()); });
  on(long_.signal_toggled(), [this](Decoder&) { address_.set_long(long_.get_active()); });
  on(device_.property_object().signal_changed(),
     [this](Decoder& decoder) { decoder.set_device(device_.get_object()); });
  on(enabled_.signal_toggled(),
     [this](Decoder& decoder) { decoder.set_commands_enabled(enabled_.get_active()); });
  on(ratio_.signal_value_changed(), [this](Decoder& decoder) {
    if (!shows_value(ratio_, decoder.get_speed_ratio())) {
      decoder.set_speed_ratio(ratio_.get_value());
    }
  });
  on(reverse_.signal_toggled(),
     [this](Decoder& decoder) { decoder.set_reverse(reverse_.get_active()); });
  decoder_->signal_changed().connect(sigc::mem_fun(*this, &DecoderForm::follow));
}

void DecoderForm::follow() {
  const UpdateGuard scope(updating_);
  type_.set_active(static_cast<int>(decoder_->get_type()));
  address_.set_address(decoder_->get_address());
  show_active(long_, decoder_->get_address().is_long());
  device_.set_object(decoder_->get_device());
  show_active(enabled_, decoder_->get_commands_enabled());
  note_->refresh();
  show_value(ratio_, decoder_->get_speed_ratio());
  show_active(reverse_, decoder_->get_reverse());
  ratio_.set_sensitive(decoder_->get_commands_enabled());
  reverse_.set_sensitive(decoder_->get_commands_enabled());
}

}  // namespace zemblar

#include "ui/panels/ecos_properties.h"

#include "core/i18n.h"
#include "core/property.h"
#include "devices/ecos/device_ecos.h"
#include "ui/toolkit/form.h"

namespace zemblar {
namespace {

const PanelRegistration<ECoS, ECoSProperties> registration;

}  // namespace

ECoSProperties::ECoSProperties(NetworkStation& station, const Glib::RefPtr<Gtk::SizeGroup>& labels)
    : Gtk::Table(3, 2),
      station_(&station),
      name_(station),
      host_(station),
      service_(false, 4),
      use_as_default_(_("_Use as a default DCC Device"), true),
      reconnect_(_("_Reconnect"), true) {
  set_spacings(4);
  set_border_width(6);
  const auto add_row = [this, &labels](guint row, const char* text, Gtk::Entry& field) {
    auto* label = Gtk::manage(new Gtk::Label(text, true));
    label->set_alignment(0, 0.5);
    label->set_mnemonic_widget(field);
    if (labels) labels->add_widget(*label);
    attach(*label, 0, 1, row, row + 1, Gtk::FILL, Gtk::FILL);
    attach(field, 1, 2, row, row + 1, Gtk::EXPAND | Gtk::FILL, Gtk::FILL);
  };
  add_row(0, _("_Name:"), name_);
  add_row(1, _("_Address:"), host_);
  service_.pack_start(use_as_default_);
  service_.pack_end(reconnect_, Gtk::PACK_SHRINK);
  attach(service_, 1, 2, 2, 3, Gtk::EXPAND | Gtk::FILL, Gtk::FILL);
  attach(in_use_, 1, 2, 3, 4, Gtk::EXPAND | Gtk::FILL, Gtk::FILL);
  in_use_.set_alignment(0, 0.5);
  in_use_.set_line_wrap();
  in_use_.set_no_show_all();
  host_.set_tooltip_text(
      _("Network name or IP address of the station, with a port as in "
        "192.168.1.20:15471 if it is not the usual one"));
  use_as_default_.set_tooltip_text(_("It then drives all decoders for which no device is chosen"));
  reconnect_.set_tooltip_text(
      _("Cuts the connection, whatever it is doing, and begins anew. What the station did not "
        "answer to is tried again after all else."));
  reconnect_.signal_clicked().connect([this] {
    host_.finish();
    if (station_) station_->reconnect();
  });
  const auto follow = [this] { follow_link(); };
  link_changed_ = sigc::connection(station.signal_link_changed().connect(follow));
  host_changed_ = station.property_host().signal_changed().connect(follow);
  host_.signal_changed().connect(follow);
  follow();
  bind_property(station, "use-as-default", use_as_default_, "active");
}

// A connection outlives a change of the address.
void ECoSProperties::follow_link() {
  if (!station_) return;
  reconnect_.set_sensitive(station_->link_state().phase != LinkPhase::not_set_up);
  const auto used = station_->connected_host();
  in_use_.set_visible(!used.empty() && used.raw() != host_.get_text().raw());
  in_use_.set_text(Glib::ustring::compose(
      _("“%1” is still in use. Reconnect goes over to the address above."), used));
}

}  // namespace zemblar

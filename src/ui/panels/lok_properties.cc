#include "ui/panels/lok_properties.h"

#include <glibmm/main.h>
#include <gtkmm/label.h>

#include "core/collections.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/property.h"
#include "locomotives/lok.h"
#include "track/block.h"
#include "ui/panels/decoder_form.h"
#include "ui/panels/function_list.h"
#include "ui/panels/lok_attribute_list.h"
#include "ui/toolkit/focus_place.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

const PanelRegistration<Lok, LokProperties> registration;

constexpr double fastest = 9999;  // km/h

Glib::ustring heading(unsigned index, std::size_t count) {
  if (count == 1) return _("<b>Decoder:</b>");
  return Glib::ustring::compose(_("<b>Decoder %1:</b>"), index + 1);
}

}  // namespace

LokProperties::LokProperties(Lok& lok, const Labels& labels)
    : Form(labels),
      lok_(&lok),
      name_(lok),
      decoders_(false, 6),
      new_decoder_(_("New _Decoder"), true),
      brake_(_("_Brake"), true),
      place_(lok) {
  add_row(_("_Name:"), name_);
  add_place();
  add_decoders();
  add_top_speed();
  add_heading(_("<b>Attributes:</b>"));
  add_wide(*Gtk::manage(new LokAttributeList(lok)));
  add_heading(_("<b>Functions:</b>"));
  add_wide(*Gtk::manage(new FunctionList(lok)));
}

LokProperties::~LokProperties() = default;

void LokProperties::add_decoders() {
  add_wide(decoders_);
  show_decoders();
  auto* row = Gtk::manage(new Gtk::HBox);
  row->pack_start(new_decoder_, false, false);
  add_wide(*row);
  new_decoder_.set_tooltip_text(
      _("For a locomotive with more than one decoder, such as a motor "
        "and a sound decoder. All of them get the same commands"));
  new_decoder_.signal_clicked().connect([this] {
    if (lok_) lok_->add_decoder();
  });
  // Rebuilt later, because the button that removes a decoder is in the form that is removed.
  decoders_changed_ = lok_->signal_decoders_changed().connect([this] {
    show_decoders_soon_ = Glib::signal_idle().connect([this] {
      const FocusPlace among_decoders(decoders_);
      show_decoders();
      among_decoders.restore(new_decoder_);
      return false;
    });
  });
}

void LokProperties::show_decoders() {
  for (auto* child : decoders_.get_children()) decoders_.remove(*child);
  decoder_forms_.clear();
  if (!lok_) return;
  for (unsigned i = 0; i < lok_->get_decoders().size(); ++i) add_decoder(i);
  decoders_.show_all();
}

void LokProperties::add_decoder(unsigned index) {
  const auto& decoders = lok_->get_decoders();
  const auto decoder = decoders[index];
  auto form = std::make_unique<DecoderForm>(decoder, heading(index, decoders.size()), labels());
  if (decoders.size() > 1) {
    auto* remove = Gtk::manage(new Gtk::Button(_("Remove Decoder")));
    remove->signal_clicked().connect([this, decoder] { remove_decoder(decoder); });
    auto* row = Gtk::manage(new Gtk::HBox);
    row->pack_start(*remove, false, false);
    form->add_field(*row);
  }
  decoders_.pack_start(*form, false, false);
  decoder_forms_.push_back(std::move(form));
}

void LokProperties::remove_decoder(const Glib::RefPtr<Decoder>& decoder) {
  if (!lok_ || lok_->get_decoders().size() < 2) return;
  for (unsigned i = 0; i < lok_->get_decoders().size(); ++i) {
    if (lok_->get_decoders()[i] == decoder) return lok_->remove_decoder(i);
  }
}

void LokProperties::add_top_speed() {
  top_speed_.set_digits(0);
  top_speed_.set_numeric();
  top_speed_.set_increments(1, 10);
  top_speed_.set_range(0, fastest);
  const auto follow = [this] {
    const UpdateGuard scope(updating_);
    show_value(top_speed_, lok_->get_top_speed());
  };
  follow();
  top_speed_changed_ = lok_->signal_top_speed_changed().connect(follow);
  top_speed_.signal_value_changed().connect([this] {
    if (lok_ && !updating_) lok_->set_top_speed(top_speed_.get_value_as_int());
  });
  add_row(_("_Top Speed:"), top_speed_, _("km/h"));
}

// --- Place on the track ---

void LokProperties::add_place() {
  place_.add_to(*this);
  add_field(brake_);
  brake_.set_tooltip_text(
      _("Holds the locomotive at speed 0. Block control sets it before a block that is not free, "
        "and releases it; release it here for a locomotive that is stuck"));
  bind_property(*lok_, "brake", brake_, "active");
}

}  // namespace zemblar

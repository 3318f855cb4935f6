#include "ui/toolkit/address_note.h"

#include <utility>

#include "core/i18n.h"
#include "core/object.h"
#include "ui/toolkit/form.h"

namespace zemblar {
namespace {

constexpr int gap = 4;
constexpr int widest = 26;  // characters

Glib::ustring text_of(Address address, const std::vector<zemblar::Object*>& others) {
  const auto number = address.get_addr();
  const auto& first = others.front()->get_name();
  const auto more = others.size() - 1;
  if (more == 0) return Glib::ustring::compose(_("Address %1 is also %2's"), number, first);
  return Glib::ustring::compose(
      dngettext(GETTEXT_PACKAGE, "Address %1 is also %2's, and that of %3 more",
                "Address %1 is also %2's, and that of %3 more", more),
      number, first, more);
}

}  // namespace

AddressNote::AddressNote(Form& form, Source source)
    : Gtk::VBox(false, gap),
      form_(form),
      source_(std::move(source)),
      next_(_("Ne_xt Free"), true),
      pulse_([this](Layout& layout, auto& connections) {
        connections.emplace_back(layout.signal_pulse().connect([this] { refresh(); }));
      }) {
  text_.set_alignment(0, 0.5);
  text_.set_line_wrap();
  text_.set_width_chars(widest);
  auto* row = Gtk::manage(new Gtk::HBox);
  row->pack_start(next_, false, false);
  pack_start(text_, false, false);
  pack_start(*row, false, false);
  next_.set_tooltip_text(_("Takes the next higher address that nobody else has"));
  next_.signal_clicked().connect([this] { source_.take_next_free(); });
  form_.add_field(*this);
  refresh();
}

void AddressNote::refresh() {
  const auto others = source_.others();
  const Glib::ustring text = others.empty() ? "" : text_of(source_.address(), others);
  const auto field = source_.field.get_accessible();
  if (field->get_description() != text.raw()) field->set_description(text);
  if (!others.empty()) {
    text_.set_text(text);
  } else if (next_.is_focus()) {
    source_.field.grab_focus();  // the button is about to be hidden
  }
  form_.show_row(*this, !others.empty());
}

}  // namespace zemblar

#include "ui/status/status_mark.h"

#include <gtkmm/box.h>
#include <gtkmm/rc.h>

namespace zemblar {
namespace {

constexpr int gap = 4;
constexpr auto style_name = "zemblar-status-mark";

}  // namespace

// A style without padding, so that the marks are no higher than a line of text.
void StatusMark::prepare_style() {
  [[maybe_unused]] static const bool known = [] {
    Gtk::RC::parse_string(
        "style \"zemblar-flat\" { xthickness = 1 ythickness = 0\n"
        "GtkButton::inner-border = { 1, 1, 0, 0 }\n"
        "GtkWidget::focus-padding = 0 GtkWidget::focus-line-width = 1 }\n"
        "widget \"*.zemblar-status-mark\" style \"zemblar-flat\"");
    return true;
  }();
}

bool StatusMark::Look::operator==(const Look& other) const {
  return shape == other.shape && text.raw() == other.text.raw() && name.raw() == other.name.raw() &&
         sentence.raw() == other.sentence.raw();
}

StatusMark::StatusMark() {
  prepare_style();
  set_name(style_name);
  set_relief(Gtk::RELIEF_NONE);
  set_focus_on_click(false);
  auto* row = Gtk::manage(new Gtk::HBox(false, gap));
  row->pack_start(shape_, false, false);
  row->pack_start(text_, false, false);
  add(*row);
  // Sets an empty name first, because the toolkit does not announce the first name that is set.
  // Until then the button has a name from its label.
  get_accessible()->set_name("");
  row->show();
  shape_.show();
}

void StatusMark::show_look(const Look& look) {
  if (look == look_) return;
  look_ = look;
  shape_.set_kind(look.shape);
  text_.set_text(look.text);
  text_.set_visible(!look.text.empty());
  set_tooltip_text(look.sentence);
  get_accessible()->set_name(look.name);
  get_accessible()->set_description(look.sentence);
}

}  // namespace zemblar

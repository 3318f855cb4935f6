#include "ui/panels/layout_properties.h"

#include "core/i18n.h"
#include "ui/toolkit/form.h"

namespace zemblar {
namespace {

constexpr int border = 6;
constexpr int column_gap = 8;

const PanelRegistration<Layout, LayoutProperties> registration;

}  // namespace

LayoutProperties::LayoutProperties(Layout& layout, const Glib::RefPtr<Gtk::SizeGroup>& labels)
    : Gtk::Table(1, 2), label_(_("_Title:"), 0.0, 0.5, true), title_(layout) {
  set_border_width(border);
  set_col_spacings(column_gap);
  labels->add_widget(label_);
  label_.set_mnemonic_widget(title_);
  attach(label_, 0, 1, 0, 1, Gtk::FILL, Gtk::FILL);
  attach(title_, 1, 2, 0, 1);
  // New resets the title without a notification, and then adds the toplevels.
  emptied_ = layout.signal_object_added().connect([this, &layout](zemblar::Object* object) {
    if (dynamic_cast<Toplevel*>(object)) show_text(title_, layout.get_name());
  });
}

}  // namespace zemblar

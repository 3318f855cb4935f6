#include "ui/windows/panel_view.h"

#include <glibmm/main.h>
#include <gtkmm/adjustment.h>
#include <gtkmm/separator.h>
#include <gtkmm/sizegroup.h>
#include <gtkmm/viewport.h>

#include "core/i18n.h"
#include "ui/panels/view_object_properties.h"
#include "ui/toolkit/widget_end.h"

namespace zemblar {
namespace {

constexpr int text_padding = 12;

/// Removes the panel now and destroys it later, because one of its own buttons may be being
/// handled.
void end_later(Gtk::Widget& panel) {
  auto* widget = panel.gobj();
  g_object_ref(widget);
  gtk_container_remove(GTK_CONTAINER(panel.get_parent()->gobj()), widget);
  Glib::signal_idle().connect_once([widget] {
    end_widget(*Glib::wrap(widget));
    g_object_unref(widget);
  });
}

}  // namespace

PanelView::PanelView(const Glib::ustring& hint) : hint_(hint), frame_(0.0, 0.0, 1.0, 0.0) {
  set_policy(Gtk::POLICY_NEVER, Gtk::POLICY_AUTOMATIC);
  set_shadow_type(Gtk::SHADOW_NONE);
  set_can_focus(false);  // a text needs no keyboard focus
  text_.set_line_wrap();
  text_.set_padding(text_padding, text_padding);
  text_.set_alignment(0.0, 0.0);
  auto* viewport = Gtk::manage(new Gtk::Viewport(*Gtk::manage(new Gtk::Adjustment(0, 0, 0)),
                                                 *Gtk::manage(new Gtk::Adjustment(0, 0, 0))));
  viewport->set_shadow_type(Gtk::SHADOW_NONE);
  viewport->add(frame_);
  add(*viewport);
  frame_.set_focus_vadjustment(*get_vadjustment());  // scrolls to the field that has the focus
  show_text(hint_);
}

PanelView::~PanelView() {
  remove_panel();
}

void PanelView::show_object(Object* object, ViewObj* drawn) {
  if (object == object_ && drawn == drawn_) return;
  remove_panel();
  object_ = object;
  drawn_ = drawn;
  object_deleted_.disconnect();
  if (!object) return show_text(hint_);
  object_deleted_ = object->signal_deleted().connect([this] { show_object(nullptr); });
  if (auto* panel = make_panel(*object, drawn)) return add_panel(*panel);
  show_text(Glib::ustring::compose(_("%1 has no properties."), object->get_name()));
}

Gtk::Widget* PanelView::make_panel(Object& object, ViewObj* drawn) {
  const auto labels = Gtk::SizeGroup::create(Gtk::SIZE_GROUP_HORIZONTAL);
  auto* own = drawn ? make_diagram_panel(*drawn, labels) : nullptr;
  auto* shown = object.make_properties_panel(labels);
  if (!own || !shown) return own ? own : shown;
  auto* both = new Gtk::VBox(false, 0);
  both->pack_start(*Gtk::manage(own), Gtk::PACK_SHRINK);
  both->pack_start(*Gtk::manage(new Gtk::HSeparator), Gtk::PACK_SHRINK);
  both->pack_start(*Gtk::manage(shown), Gtk::PACK_SHRINK);
  both->show_all_children();
  return both;
}

void PanelView::add_panel(Gtk::Widget& panel) {
  remove_panel();
  frame_.add(*Gtk::manage(&panel));
  panel.show();
  frame_.show();
}

void PanelView::remove_panel() {
  auto* child = frame_.get_child();
  if (child == &text_) {
    frame_.remove();
  } else if (child) {
    end_later(*child);
  }
}

void PanelView::show_text(const Glib::ustring& text) {
  remove_panel();
  text_.set_text(text);
  frame_.add(text_);
  text_.show();
}

}  // namespace zemblar

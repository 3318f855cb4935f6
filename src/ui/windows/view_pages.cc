#include "ui/windows/view_pages.h"

#include <atkmm/object.h>
#include <gdk/gdkkeysyms.h>
#include <glibmm/main.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/stock.h>
#include <gtkmm/viewport.h>
#include <gtkmm/window.h>

#include <algorithm>

#include "core/i18n.h"
#include "ui/canvas/diagram_canvas.h"
#include "ui/windows/file_menu.h"

namespace zemblar {

Gtk::Widget* scrolled(Gtk::Widget* canvas) {
  auto* page = Gtk::manage(new Gtk::ScrolledWindow);
  page->set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_AUTOMATIC);
  auto* port = Gtk::manage(new Gtk::Viewport(*page->get_hadjustment(), *page->get_vadjustment()));
  port->set_shadow_type(Gtk::SHADOW_NONE);
  port->add(*canvas);
  page->add(*port);
  page->show_all_children();
  return page;
}

struct ViewPages::Page {
  Page(View& view, Gtk::Widget* canvas, Gtk::Label* tab) : view(view), canvas(canvas), tab(tab) {}

  View& view;
  Gtk::Widget* canvas;
  Gtk::Label* tab;
  LayoutFollower::Connections connections;
};

ViewPages::ViewPages(MakeCanvas make_canvas, Hidden hidden)
    : make_canvas_(std::move(make_canvas)), hidden_(hidden), hint_(false, 12) {
  notebook_.set_show_border(false);
  notebook_.set_border_width(0);
  notebook_.set_scrollable(true);
  notebook_.popup_enable();
  stack_.attach(notebook_, 0, 1, 0, 1);
  stack_.attach(fit_hint_, 0, 1, 0, 1);
  pack_start(stack_, Gtk::PACK_EXPAND_WIDGET);
  hint_.pack_start(hint_text_, Gtk::PACK_SHRINK);
  pack_start(hint_, Gtk::PACK_EXPAND_PADDING);
  hint_text_.show();
  // show_all must not show both; which one is visible depends on the views.
  stack_.set_no_show_all();
  notebook_.set_no_show_all();
  hint_.set_no_show_all();
  page_switched_ =
      notebook_.signal_switch_page().connect([this](GtkNotebookPage*, guint) { announce(); });
  follower_ = std::make_unique<LayoutFollower>(
      [this](Layout& layout, LayoutFollower::Connections& connections) {
        attach(layout, connections);
      });
}

// The toolkit removes the pages one by one, which must not be announced.
ViewPages::~ViewPages() {
  page_switched_.disconnect();
  fit_hint_.follow(nullptr);
}

void ViewPages::attach(Layout& layout, LayoutFollower::Connections& connections) {
  connections.emplace_back(layout.signal_object_added().connect([this](Object* object) {
    if (auto* view = dynamic_cast<View*>(object)) add_page(*view);
  }));
  connections.emplace_back(
      layout.signal_object_moved().connect([this](Object* object) { place_page(*object); }));
  for (auto* object : layout.get_views()) {
    if (auto* view = dynamic_cast<View*>(object)) add_page(*view);
  }
  refresh_hint();
}

void ViewPages::add_page(View& view) {
  auto* canvas = Gtk::manage(make_canvas_(view));
  auto* tab = Gtk::manage(new Gtk::Label(view.get_name()));
  pages_.push_back(std::make_unique<Page>(view, canvas, tab));
  auto& page = *pages_.back();
  page.connections.emplace_back(
      view.signal_deleted().connect([this, &view] { remove_page(view); }));
  page.connections.emplace_back(view.property_name().signal_changed().connect([this, &page] {
    page.tab->set_text(page.view.get_name());
    notebook_.set_menu_label_text(*page.canvas, page.view.get_name());
  }));
  page.connections.emplace_back(
      view.property_hidden().signal_changed().connect([this, &page] { show_page(page); }));
  tab->show();
  canvas->set_visible(is_seen(view));
  notebook_.append_page(*canvas, *tab);
  notebook_.set_menu_label_text(*canvas, view.get_name());
  place_page(view);
  show_page(page);
}

bool ViewPages::is_seen(const View& view) const {
  return hidden_ == Hidden::show || !view.get_hidden();
}

void ViewPages::place_page(const Object& view) {
  const auto page = std::ranges::find_if(pages_, [&](auto& p) { return &p->view == &view; });
  if (page != pages_.end()) notebook_.reorder_child(*(*page)->canvas, view.get_position());
}

void ViewPages::remove_page(const View& view) {
  const auto page = std::ranges::find_if(pages_, [&](auto& p) { return &p->view == &view; });
  if (page == pages_.end()) return;
  auto* canvas = (*page)->canvas;
  // Keeps the page until the end of this function, because one of its connections may have called
  // it.
  const auto ended = std::move(*page);
  pages_.erase(page);
  fit_hint_.follow(nullptr);
  notebook_.remove_page(*canvas);
  refresh_hint();
  announce();
  announce_focus_later();
}

// Announces the focus again, because in an idle handler the toolkit tells assistive technology that
// the next page's tab has it.
void ViewPages::announce_focus_later() {
  announce_focus_ = Glib::signal_idle().connect(
      [this] {
        auto* window = dynamic_cast<Gtk::Window*>(get_toplevel());
        auto* focus = window ? window->get_focus() : nullptr;
        // Deprecated, but the only announcement that the toolkit's accessibility bridge uses.
        G_GNUC_BEGIN_IGNORE_DEPRECATIONS
        if (focus) atk_focus_tracker_notify(focus->get_accessible()->gobj());
        G_GNUC_END_IGNORE_DEPRECATIONS
        return false;
      },
      Glib::PRIORITY_LOW);
}

// Selects a page that becomes visible, because the notebook does that only at its next layout, if
// at all.
void ViewPages::show_page(Page& page) {
  page.canvas->set_visible(is_seen(page.view));
  refresh_hint();
  if (!current_page()) notebook_.set_current_page(notebook_.page_num(*page.canvas));
  take_free_focus();
}

void ViewPages::refresh_hint() {
  const bool any =
      std::ranges::any_of(pages_, [](auto& page) { return page->canvas->get_visible(); });
  stack_.set_visible(any);
  notebook_.set_visible(any);
  hint_.set_visible(!any);
  hint_text_.set_text(pages_.empty() ? _("This layout has no view yet.")
                                     : _("All views of this layout are hidden."));
}

// When the last page is hidden, it is still the notebook's current page, but does not count.
Gtk::Widget* ViewPages::current_page() const {
  auto& notebook = const_cast<BottomTabs&>(notebook_);
  const int number = notebook.get_current_page();
  auto* page = number < 0 ? nullptr : notebook.get_nth_page(number);
  return page && page->get_visible() ? page : nullptr;
}

View* ViewPages::current() const {
  const auto* child = current_page();
  const auto page = std::ranges::find_if(pages_, [&](auto& p) { return p->canvas == child; });
  return page == pages_.end() ? nullptr : &(*page)->view;
}

// Finds the canvas inside its scrolled window.
DiagramCanvas* ViewPages::current_canvas() const {
  auto* widget = current_page();
  while (auto* frame = dynamic_cast<Gtk::Bin*>(widget)) widget = frame->get_child();
  return dynamic_cast<DiagramCanvas*>(widget);
}

void ViewPages::take_free_focus() {
  auto* window = dynamic_cast<Gtk::Window*>(get_toplevel());
  auto* canvas = current_canvas();
  if (window && canvas && !window->get_focus()) canvas->grab_focus();
}

void ViewPages::append_zoom_items(Gtk::Menu& menu, const Glib::RefPtr<Gtk::AccelGroup>& keys) {
  struct Entry {
    const Gtk::BuiltinStockID& id;
    void (DiagramCanvas::*zoom)();
    guint key;
    guint keypad;
  };
  for (const auto& [id, zoom, key, keypad] :
       {Entry{Gtk::Stock::ZOOM_IN, &DiagramCanvas::zoom_in, GDK_KEY_plus, GDK_KEY_KP_Add},
        Entry{Gtk::Stock::ZOOM_OUT, &DiagramCanvas::zoom_out, GDK_KEY_minus, GDK_KEY_KP_Subtract},
        Entry{Gtk::Stock::ZOOM_FIT, &DiagramCanvas::show_whole, GDK_KEY_0, GDK_KEY_KP_0}}) {
    auto* item = append_stock_item(menu, id, [this, zoom = zoom] {
      if (auto* canvas = current_canvas()) (canvas->*zoom)();
    });
    item->add_accelerator("activate", keys, key, Gdk::CONTROL_MASK, Gtk::ACCEL_VISIBLE);
    item->add_accelerator("activate", keys, keypad, Gdk::CONTROL_MASK, Gtk::AccelFlags(0));
  }
}

void ViewPages::announce() {
  fit_hint_.follow(current_canvas());
  signal_current_changed_.emit();
}

void ViewPages::add_to_hint(Gtk::Widget& widget) {
  auto* centred = Gtk::manage(new Gtk::HBox);
  centred->pack_start(widget, Gtk::PACK_EXPAND_PADDING);
  hint_.pack_start(*centred, Gtk::PACK_SHRINK);
  centred->show_all();
}

}  // namespace zemblar

#pragma once

#include <gtkmm/accelgroup.h>
#include <gtkmm/box.h>
#include <gtkmm/label.h>
#include <gtkmm/menu.h>
#include <gtkmm/table.h>

#include <functional>
#include <memory>
#include <vector>

#include "diagram/view.h"
#include "ui/canvas/fit_hint.h"
#include "ui/toolkit/bottom_tabs.h"
#include "ui/toolkit/layout_follower.h"

namespace zemblar {

class DiagramCanvas;

/// A managed scrolled window around a canvas, which may be larger than the page if it has a large
/// picture.
[[nodiscard]] Gtk::Widget* scrolled(Gtk::Widget* canvas);

/// A notebook with one page for each view of the current layout, labelled with its name. It is kept
/// up to date when views are added, renamed or removed, and after New and Open. If there is no
/// page, a text is shown instead.
class ViewPages : public Gtk::VBox {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  /// Makes the content of a page, owned by the notebook. The view outlives the content.
  using MakeCanvas = std::function<Gtk::Widget*(View&)>;
  /// With `skip`, a view has no page while it is hidden.
  enum class Hidden { show, skip };

  ViewPages(MakeCanvas make_canvas, Hidden hidden);
  ~ViewPages() override;

  /// The view on the current page, or null.
  [[nodiscard]] View* current() const;
  /// The canvas on the current page, or null.
  [[nodiscard]] DiagramCanvas* current_canvas() const;
  /// Focuses the current canvas if no widget of the window has the focus.
  void take_free_focus();
  /// Appends items, with keys, that zoom the current page.
  void append_zoom_items(Gtk::Menu& menu, const Glib::RefPtr<Gtk::AccelGroup>& keys);
  /// The current page has changed, also from or to none.
  sigc::signal<void>& signal_current_changed() { return signal_current_changed_; }

  /// Adds a managed widget below the text that is shown when there is no page.
  void add_to_hint(Gtk::Widget& widget);

 private:
  struct Page;

  void attach(Layout& layout, LayoutFollower::Connections& connections);
  void add_page(View& view);
  void place_page(const Object& view);
  void remove_page(const View& view);
  void announce_focus_later();
  void show_page(Page& page);
  [[nodiscard]] bool is_seen(const View& view) const;
  /// The content of the current page; null when no page is visible.
  [[nodiscard]] Gtk::Widget* current_page() const;
  void refresh_hint();
  void announce();

  MakeCanvas make_canvas_;
  Hidden hidden_;
  Gtk::Table stack_{1, 1};  // the notebook, and the FitHint over it
  BottomTabs notebook_;
  FitHint fit_hint_;
  Gtk::VBox hint_;
  Gtk::Label hint_text_;
  std::vector<std::unique_ptr<Page>> pages_;
  sigc::signal<void> signal_current_changed_;
  ScopedConnection page_switched_;
  ScopedConnection announce_focus_;
  std::unique_ptr<LayoutFollower> follower_;
};

}  // namespace zemblar

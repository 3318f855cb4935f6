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

/// A page's content for a canvas that may ask for more room than there is, as one with a large
/// picture does. Managed.
[[nodiscard]] Gtk::Widget* scrolled(Gtk::Widget* canvas);

/// A notebook with one page for each view of the current layout, labelled with its name. It
/// follows views that are added, renamed and removed, and New and Open. Where there is no view,
/// a text in its place says so.
class ViewPages : public Gtk::VBox {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  /// Makes the page's content; the notebook owns it. The view outlives the content.
  using MakeCanvas = std::function<Gtk::Widget*(View&)>;
  /// With `skip_hidden` the page of a hidden view has no tab while it is hidden.
  enum class Hidden { show, skip };

  ViewPages(MakeCanvas make_canvas, Hidden hidden);
  ~ViewPages() override;

  /// The view on the page that is shown; null when there is none.
  [[nodiscard]] View* current() const;
  /// What shows that view; null when there is none.
  [[nodiscard]] DiagramCanvas* current_canvas() const;
  /// Gives the focus to the canvas that is shown if no widget of the window has it.
  void take_free_focus();
  /// Entries that zoom the page that is shown, with their keys.
  void append_zoom_items(Gtk::Menu& menu, const Glib::RefPtr<Gtk::AccelGroup>& keys);
  /// The page that is shown, or its being there at all, changed.
  sigc::signal<void>& signal_current_changed() { return signal_current_changed_; }

  /// Stands below the text that takes the notebook's place; managed.
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
  /// Null when no page is seen.
  [[nodiscard]] Gtk::Widget* current_page() const;
  void refresh_hint();
  void announce();

  MakeCanvas make_canvas_;
  Hidden hidden_;
  Gtk::Table stack_{1, 1};  // the notebook, and over it the hint
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

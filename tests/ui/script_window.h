#pragma once

#include <gtkmm/menu.h>

#include "core/toplevel.h"
#include "locomotives/lok.h"
#include "scripts/script_command_wait.h"
#include "scripts/script_event_occupied.h"
#include "scripts/script_registry.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/keys.h"
#include "track/zone.h"
#include "ui/scripts/script_editor.h"

namespace zemblar::test {

using Texts = std::vector<std::string>;

/// The menu that is open; null for none.
inline Gtk::Menu* open_menu() {
  for (auto* window : Gtk::Window::list_toplevels()) {
    auto* menu = dynamic_cast<Gtk::Menu*>(window->get_child());
    if (window->get_visible() && menu && menu->get_visible()) return menu;
  }
  return nullptr;
}

inline Texts offered() {
  Texts texts;
  auto* menu = open_menu();
  if (!menu) return texts;
  for (auto& item : menu->items()) texts.push_back(item.get_label());
  return texts;
}

inline void choose(const std::string& text) {
  auto* menu = open_menu();
  ASSERT_TRUE(menu) << text;
  for (auto& item : menu->items()) {
    if (item.get_label().raw() != text) continue;
    menu->activate_item(item, true);
    return handle_events();
  }
  ADD_FAILURE() << testing::PrintToString(offered()) << " have not " << text;
}

/// A window on a script.
class ScriptWindow {
 public:
  explicit ScriptWindow(Script& script) : window_(new ScriptEditor(script)) {
    window_->add_destroy_notify_callback(&window_, [](void* data) -> void* {
      *static_cast<ScriptEditor**>(data) = nullptr;
      return nullptr;
    });
    window_->show();
    handle_events();
    // There is no window manager to do so.
    GdkEvent event{};
    event.focus_change = {GDK_FOCUS_CHANGE, window_->get_window()->gobj(), 0, 1};
    window_->event(&event);
  }
  ~ScriptWindow() {
    if (window_) window_->hide();
    handle_events();
  }
  ScriptWindow(const ScriptWindow&) = delete;
  ScriptWindow& operator=(const ScriptWindow&) = delete;

  [[nodiscard]] bool is_open() const { return window_ != nullptr; }
  ScriptEditor& operator*() const { return *window_; }
  [[nodiscard]] Gtk::TreeView& list() const { return get_widget<Gtk::TreeView>(*window_); }
  [[nodiscard]] Gtk::Button& button(const char* label) const {
    return get_widget<Gtk::Button>(*window_, label);
  }
  void press(std::initializer_list<guint> keys, unsigned modifiers = 0) const {
    for (const auto key : keys) press_key(*window_, key, modifiers);
  }
  void type(const std::string& text) const { type_keys(*window_, text); }

  [[nodiscard]] Texts rows() const {
    handle_events();
    Texts texts;
    for (const auto& row : list().get_model()->children()) {
      texts.push_back(row.get_value(ScriptRows::columns().text));
    }
    return texts;
  }
  [[nodiscard]] std::string selected() const {
    const auto row = list().get_selection()->get_selected();
    return row ? (*row).get_value(ScriptRows::columns().text).raw() : "";
  }
  void select(unsigned row) const {
    list().set_cursor(Gtk::TreePath(std::to_string(row)));
    handle_events();
  }
  /// Where an argument is in the list.
  [[nodiscard]] Gdk::Rectangle place_of(unsigned row, unsigned arg) const {
    auto& column = *list().get_column(0);
    const std::vector<Gtk::CellRenderer*> cells = column.get_cell_renderers();
    auto& cell = dynamic_cast<CRScript&>(*cells[0]);
    const Gtk::TreePath path(std::to_string(row));
    column.cell_set_cell_data(list().get_model(), list().get_model()->get_iter(path), false, false);
    const auto [left, width] = cell.place_of(list(), arg);
    Gdk::Rectangle area;
    list().get_cell_area(path, column, area);
    return {area.get_x() + left, area.get_y(), width, area.get_height()};
  }
  /// Presses the pointer's button in the middle of an argument, or `aside` pixels behind it.
  void click(unsigned row, unsigned arg, int aside = 0, unsigned button = 1) const {
    const auto place = place_of(row, arg);
    const int width = place.get_width();
    send_press(place.get_x() + (aside ? width + aside : width / 2),
               place.get_y() + place.get_height() / 2, button);
  }

  [[nodiscard]] bool has_tooltip(unsigned row) const {
    Gdk::Rectangle area;
    list().get_cell_area(Gtk::TreePath(std::to_string(row)), *list().get_column(0), area);
    auto* tooltip = g_object_new(GTK_TYPE_TOOLTIP, nullptr);
    gboolean shown = FALSE;
    g_signal_emit_by_name(list().gobj(), "query-tooltip", area.get_x() + 1, area.get_y() + 5, FALSE,
                          tooltip, &shown);
    g_object_unref(tooltip);
    return shown;
  }

  /// What edits a cell; null when nothing does.
  template <typename Editor>
  [[nodiscard]] Editor* editor() const {
    return find_widget<Editor>(list(), "");
  }

 private:
  void send_press(int x, int y, unsigned button) const {
    const auto event = make_event(GDK_BUTTON_PRESS, list().get_bin_window()->gobj());
    event->button.button = button;
    event->button.x = x;
    event->button.y = y;
    gtk_main_do_event(event.get());
    handle_events();
  }

  ScriptEditor* window_;
};

/// A script, a block and a locomotive.
class ScriptEditorTest : public LayoutTest {
 protected:
  ScriptEditorTest() {
    zone.set_name("Station");
    lok.set_name("Express %1");
  }

  ScriptEventOccupied& add_occupied() {
    auto* line = new ScriptEventOccupied;
    script.add_condition(line);
    return *line;
  }
  ScriptCommandWait& add_wait(double seconds) {
    auto* line = new ScriptCommandWait(script);
    line->set_spin_value(1, seconds);
    script.add_command(line);
    return *line;
  }
  void add_command(const char* key) { script.add_command(create_script_command(key, script)); }

  Script& script = *layout().get_scripts().add(new Script);
  Zone& zone = *layout().get_blocks().add(new Zone);
  Lok& lok = *layout().get_loks().add(new Lok);
};

}  // namespace zemblar::test

#pragma once

#include <glibmm/propertyproxy.h>
#include <gtkmm/cellrenderer.h>
#include <pangomm/layout.h>

#include <functional>
#include <optional>
#include <utility>

#include "scripts/script.h"  // complete type, so that its pointer is an object property
#include "ui/scripts/line_notes.h"
#include "ui/scripts/script_menu.h"
#include "ui/scripts/script_row.h"

namespace Gtk {
class TreeView;
}  // namespace Gtk

namespace zemblar {

/// Draws a row of the script editor as a sentence, in which arguments look like links, and edits
/// the arguments.
///
/// A menu opens below its argument; other editors replace their argument in the sentence. In the
/// selected row of the tree one argument is selected, which the keys edit.
///
/// Before a line ends, call `let_go` or remove its row from the tree; either cancels the editing.
class CRScript : public Gtk::CellRenderer {
 public:
  using Type = ScriptRowType;

  CRScript();
  ~CRScript() override;

  Glib::PropertyProxy<Type> property_type() { return {this, "type"}; }
  Glib::PropertyProxy<Script*> property_script() { return {this, "script"}; }
  Glib::PropertyProxy<ScriptLine*> property_script_line() { return {this, "script-line"}; }
  /// Increased to make the tree measure the row again.
  Glib::PropertyProxy<unsigned> property_refresh() { return {this, "refresh"}; }

  /// What is drawn beside the sentence of a line.
  void set_notes(std::function<LineNote(const ScriptLine*)> notes) { notes_ = std::move(notes); }

  /// The row with the present property values.
  [[nodiscard]] const ScriptRow& row() const { return row_; }
  /// The editable argument at `x`, in pixels from the left side of the cell; no value if there is
  /// none.
  [[nodiscard]] std::optional<unsigned> arg_at(Gtk::Widget& widget, int x) const;
  /// Left side and width of the argument, in the same coordinates.
  [[nodiscard]] std::pair<int, int> place_of(Gtk::Widget& widget, unsigned arg) const;

  /// The argument that the keys edit, as an index into the editable arguments.
  [[nodiscard]] unsigned chosen() const { return chosen_; }
  void choose(unsigned place) { chosen_ = place; }

  /// `close_menu` closes the open menu; `let_go` closes it if it belongs to a line that is about to
  /// end.
  void close_menu() { menu_.close(); }
  void let_go(const ScriptLine* line) { menu_.let_go(*line); }

  /// The user has added a line.
  sigc::signal<void, ScriptLine&>& signal_line_added() { return signal_line_added_; }

 protected:
  void get_size_vfunc(Gtk::Widget& widget, const Gdk::Rectangle* cell_area, int* x_offset,
                      int* y_offset, int* width, int* height) const override;
  void render_vfunc(const Glib::RefPtr<Gdk::Drawable>& window, Gtk::Widget& widget,
                    const Gdk::Rectangle& background_area, const Gdk::Rectangle& cell_area,
                    const Gdk::Rectangle& expose_area, Gtk::CellRendererState flags) override;
  Gtk::CellEditable* start_editing_vfunc(GdkEvent* event, Gtk::Widget& widget,
                                         const Glib::ustring& path,
                                         const Gdk::Rectangle& background_area,
                                         const Gdk::Rectangle& cell_area,
                                         Gtk::CellRendererState flags) override;

 private:
  using Layout = Glib::RefPtr<Pango::Layout>;
  struct Editing {
    const ScriptLine* line;
    unsigned arg;
    Gtk::Widget* editor;
    int left;  // left side of the argument in the cell

    [[nodiscard]] int width() const;
  };
  struct Look;

  [[nodiscard]] Type get_type() const { return row_.type; }
  void set_type(Type type) { row_.type = type; }
  [[nodiscard]] Script* get_script() const { return row_.script; }
  void set_script(Script* script) { row_.script = script; }
  [[nodiscard]] ScriptLine* get_line() const { return row_.line; }
  void set_line(ScriptLine* line) { row_.line = line; }
  [[nodiscard]] unsigned get_refresh() const { return refresh_; }
  void set_refresh(unsigned refresh) { refresh_ = refresh; }

  [[nodiscard]] bool is_editing() const { return editing_ && editing_->line == row_.line; }
  [[nodiscard]] std::optional<unsigned> chosen_arg() const;
  [[nodiscard]] Sentence sentence() const;
  [[nodiscard]] Layout lay_out(Gtk::Widget& widget, const Look& look) const;
  [[nodiscard]] std::pair<int, int> extents(const Layout& layout, unsigned arg) const;
  [[nodiscard]] std::pair<int, int> unshifted_extents(const Layout& layout, unsigned arg) const;
  [[nodiscard]] int shift(const Layout& layout) const;
  void draw_behind(const Glib::RefPtr<Gdk::Drawable>& window, Gtk::Widget& widget,
                   const Gdk::Rectangle& expose_area, const Gdk::Rectangle& area) const;
  void draw_note(const Glib::RefPtr<Gdk::Drawable>& window, Gtk::Widget& widget,
                 const Gdk::Rectangle& area, int sentence_width, const Look& look) const;
  void draw_chosen(const Glib::RefPtr<Gdk::Drawable>& window, Gtk::Widget& widget,
                   const Gdk::Rectangle& area) const;

  using End = std::function<void(bool cancelled)>;
  template <typename Editor>
  Gtk::CellEditable* show(Editor& editor, unsigned arg, int left, const End& end);
  void pop_up(Gtk::TreeView& tree, unsigned arg, const Gdk::Rectangle& cell_area);
  [[nodiscard]] Gtk::CellEditable* edit(Gtk::Widget& tree, unsigned arg);
  [[nodiscard]] Gtk::CellEditable* edit_number(Gtk::Widget& tree, unsigned arg, int left);
  [[nodiscard]] Gtk::CellEditable* edit_text(Gtk::Widget& tree, unsigned arg, int left);
  [[nodiscard]] Gtk::CellEditable* edit_custom(Gtk::Widget& tree, unsigned arg, int left);

  ScriptRow row_;
  unsigned refresh_ = 0;
  unsigned chosen_ = 0;
  std::optional<Editing> editing_;
  mutable int editor_height_ = 0;  // minimum height of all rows; 0 before it is measured
  std::function<LineNote(const ScriptLine*)> notes_;
  ScriptMenu menu_;
  sigc::signal<void, ScriptLine&> signal_line_added_;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/menutoolbutton.h>
#include <gtkmm/toolbar.h>

#include <vector>

namespace zemblar {

/// What a tool puts on a view.
enum class DiagramKind { point, zone, crossing, scissor, signal, label };

/// The tools that add objects to a view: one button for each kind, with a menu for the choice
/// between a new object of the layout and one that exists. The button itself adds a new one, but
/// the label of a zone that exists: a new zone would have no track. The same choices stand in a
/// menu, for keys.
class EditorTools {
 public:
  explicit EditorTools(Gtk::Toolbar& toolbar);

  void append_items(Gtk::MenuShell& menu);

  void set_sensitive(bool sensitive);
  /// A tool was chosen: the kind, and whether it takes an existing object.
  sigc::signal<void, DiagramKind, bool>& signal_chosen() { return signal_chosen_; }

 private:
  Gtk::Menu* make_menu(DiagramKind kind, const Glib::ustring& add_new,
                       const Glib::ustring& add_existing);

  void choose(DiagramKind kind, bool existing);

  std::vector<Gtk::MenuToolButton*> buttons_;
  std::vector<Gtk::MenuItem*> items_;
  sigc::signal<void, DiagramKind, bool> signal_chosen_;
};

}  // namespace zemblar

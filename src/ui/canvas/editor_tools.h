#pragma once

#include <gtkmm/menutoolbutton.h>
#include <gtkmm/toolbar.h>

#include <vector>

namespace zemblar {

struct ViewClass;

/// The tools that add objects to a view: a button for each class of diagram objects, whose menu
/// offers a new object of the layout or an existing one. The button itself adds a new one, except
/// for labels, which are added for an existing zone: a new zone would have no track. For use by
/// keys, `append_items` adds the same choices to a menu.
class EditorTools {
 public:
  explicit EditorTools(Gtk::Toolbar& toolbar);

  void append_items(Gtk::MenuShell& menu);

  void set_sensitive(bool sensitive);
  /// A tool was chosen: the class that it adds, and whether it takes an existing object.
  sigc::signal<void, const ViewClass&, bool>& signal_chosen() { return signal_chosen_; }

 private:
  Gtk::Menu* make_menu(const ViewClass& kind);

  void choose(const ViewClass& kind, bool existing);

  std::vector<Gtk::MenuToolButton*> buttons_;
  std::vector<Gtk::MenuItem*> items_;
  sigc::signal<void, const ViewClass&, bool> signal_chosen_;
};

}  // namespace zemblar

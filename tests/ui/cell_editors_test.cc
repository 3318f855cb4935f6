#include <gmock/gmock.h>
#include <gtkmm/cellrenderer.h>
#include <gtkmm/liststore.h>
#include <gtkmm/menu.h>
#include <gtkmm/scale.h>
#include <gtkmm/treeview.h>

#include "tests/ui/keys.h"
#include "ui/toolkit/combo_box_text.h"
#include "ui/toolkit/script_alignment.h"
#include "ui/toolkit/script_hbox.h"
#include "ui/toolkit/spin_button.h"

namespace zemblar::test {
namespace {

using MakeEditor = std::function<Gtk::Widget*()>;

/// What an editor, or all inside it, says now.
std::string read(Gtk::Widget& widget) {
  if (auto* spin = dynamic_cast<Gtk::SpinButton*>(&widget)) {
    return std::to_string(spin->get_value_as_int());
  }
  if (auto* entry = dynamic_cast<Gtk::Entry*>(&widget)) return entry->get_text();
  if (auto* combo = dynamic_cast<ComboBoxText*>(&widget)) return combo->get_text();
  std::string texts;
  if (auto* container = dynamic_cast<Gtk::Container*>(&widget)) {
    for (auto* child : container->get_children()) texts += read(*child);
  }
  return texts;
}

/// Hands out editors, and notes how each editing came out.
class EditingRenderer : public Gtk::CellRenderer {
 public:
  EditingRenderer() : Glib::ObjectBase("EditingRenderer") {
    property_mode() = Gtk::CELL_RENDERER_MODE_EDITABLE;
  }

  MakeEditor make;
  Gtk::Widget* editor = nullptr;  // null once it is freed
  std::vector<std::string> outcomes;
  std::function<void()> on_done = [] {};

 protected:
  Gtk::CellEditable* start_editing_vfunc(GdkEvent*, Gtk::Widget&, const Glib::ustring&,
                                         const Gdk::Rectangle&, const Gdk::Rectangle&,
                                         Gtk::CellRendererState) override {
    editor = Gtk::manage(make());
    editor->add_destroy_notify_callback(&editor, [](void* data) -> void* {
      *static_cast<Gtk::Widget**>(data) = nullptr;
      return nullptr;
    });
    editor->show_all();
    auto* editable = dynamic_cast<Gtk::CellEditable*>(editor);
    editable->signal_editing_done().connect([this, editable] {
      outcomes.push_back(editable->property_editing_canceled() ? "canceled" : read(*editor));
      on_done();
    });
    return editable;
  }
};

Gtk::Widget* edit_number() {
  auto* spin = new SpinButton(0, 1);
  spin->set_range(0, 100);
  spin->set_increments(0.5, 5);
  spin->set_numeric();
  spin->set_value(7);
  return spin;
}

Gtk::Widget* edit_number_in_place() {
  auto* place = new ScriptAlignment(0, 0.5F, 0.5F, 1);
  place->add(*Gtk::manage(edit_number()));
  return place;
}

Gtk::Widget* edit_with_slider() {
  auto* place = new ScriptAlignment;
  place->add(*Gtk::manage(new Gtk::HScale(0, 100, 1)));
  return place;
}

Gtk::Widget* edit_entries() {
  auto* box = new ScriptHBox(false, 6);
  for (int i = 0; i < 2; ++i) box->pack_start(*Gtk::manage(new Gtk::Entry));
  return box;
}

template <bool has_entry>
Gtk::Widget* edit_choice() {
  auto* combo = new ComboBoxText(has_entry);
  for (const char* text : {"7", "42"}) combo->append(text);
  return combo;
}

class CellEditors : public testing::Test {
 protected:
  CellEditors() {
    column.add(number);
    rows = Gtk::ListStore::create(column);
    rows->append();
    tree.set_model(rows);
    tree.append_column(*Gtk::manage(new Gtk::TreeViewColumn("", renderer)));
    auto* box = Gtk::manage(new Gtk::VBox);
    box->pack_start(tree);
    box->pack_start(elsewhere);
    window->add(*box);
    window->show_all();
    handle_events();
  }

  void edit(const MakeEditor& make) {
    renderer.make = make;
    renderer.outcomes.clear();
    tree.set_cursor(Gtk::TreePath("0"), *tree.get_column(0), true);
    ASSERT_TRUE(renderer.editor);
    const auto* focus = window->get_focus();
    ASSERT_TRUE(focus == renderer.editor || focus->is_ancestor(*renderer.editor));
  }
  void press(guint key) const { press_key(*window, key); }
  void type(const std::string& keys) const { type_keys(*window, keys); }
  void expect_ended(const std::string& outcome) const {
    EXPECT_THAT(renderer.outcomes, testing::ElementsAre(outcome));
    EXPECT_FALSE(renderer.editor);
  }

  Gtk::TreeModelColumnRecord column;
  Gtk::TreeModelColumn<int> number;
  Glib::RefPtr<Gtk::ListStore> rows;
  EditingRenderer renderer;
  Gtk::TreeView& tree = *Gtk::manage(new Gtk::TreeView);
  Gtk::Button& elsewhere = *Gtk::manage(new Gtk::Button);
  std::unique_ptr<Gtk::Window> window = std::make_unique<Gtk::Window>();
};

const MakeEditor all_editors[] = {edit_number, edit_number_in_place, edit_entries,
                                  edit_choice<true>};

TEST_F(CellEditors, hand_over_what_was_typed_on_Return_and_nothing_on_Escape) {
  for (const auto& make : all_editors) {
    for (const guint end : {GDK_Return, GDK_KP_Enter, GDK_Escape}) {
      edit(make);
      type("42");
      press(end);
      expect_ended(end == GDK_Escape ? "canceled" : "42");
      EXPECT_EQ(window->get_focus(), &tree);
    }
  }
}

TEST_F(CellEditors, end_when_the_focus_goes_elsewhere_in_the_window) {
  for (const auto& make : all_editors) {
    edit(make);
    type("42");
    GdkEvent leave{};
    leave.focus_change = {GDK_FOCUS_CHANGE, window->get_window()->gobj(), 0, 0};
    window->event(&leave);
    EXPECT_TRUE(renderer.editor) << "the window may come back";
    elsewhere.grab_focus();
    expect_ended("42");
    EXPECT_EQ(window->get_focus(), &elsewhere);
  }
}

TEST_F(CellEditors, are_canceled_when_their_row_or_their_window_goes) {
  for (const auto& make : all_editors) {
    edit(make);
    type("42");
    rows->erase(rows->children().begin());
    expect_ended("canceled");
    rows->append();
  }
  edit(edit_entries);
  window.reset();
  expect_ended("canceled");
}

TEST_F(CellEditors, report_once_when_the_report_moves_the_focus) {
  renderer.on_done = [this] { tree.child_focus(Gtk::DIR_TAB_FORWARD); };
  edit(edit_entries);
  type("42");
  press(GDK_Return);
  expect_ended("42");
}

TEST_F(CellEditors, open_a_list_of_choices_at_once_and_end_with_it) {
  for (const bool choose : {true, false}) {
    edit(edit_choice<false>);
    handle_events();
    auto& combo = dynamic_cast<ComboBoxText&>(*renderer.editor);
    ASSERT_TRUE(combo.property_popup_shown());
    if (choose) {
      auto* lists = gtk_menu_get_for_attach_widget(static_cast<Gtk::Widget&>(combo).gobj());
      auto* list = Glib::wrap(GTK_MENU(lists->data));
      list->activate_item(list->items().back(), true);
    } else {
      combo.popdown();
    }
    handle_events();
    expect_ended(choose ? "42" : "canceled");
  }
}

TEST_F(CellEditors, step_a_number_with_the_arrow_keys) {
  for (const auto& make : {edit_number, edit_number_in_place}) {
    edit(make);
    press(GDK_Up);
    press(GDK_Up);
    press(GDK_Return);
    expect_ended("8");
  }
}

TEST_F(CellEditors, end_on_Return_in_a_widget_that_has_no_use_for_it) {
  for (const guint end : {GDK_Return, GDK_KP_Enter}) {
    edit(edit_with_slider);
    press(end);
    expect_ended("");
  }
}

TEST_F(CellEditors, pass_on_with_Tab_inside_and_end_behind_the_last_widget) {
  edit(edit_entries);
  type("4");
  press(GDK_Tab);
  type("2");
  press(GDK_ISO_Left_Tab);
  press(GDK_End);
  type("0");
  press(GDK_Tab);
  EXPECT_TRUE(renderer.editor);
  press(GDK_Tab);
  expect_ended("402");
}

TEST(ComboBoxText, chooses_only_what_it_offers_unless_it_has_an_entry) {
  for (const bool has_entry : {false, true}) {
    ComboBoxText combo(has_entry);
    combo.append("A");
    combo.append("B");
    EXPECT_EQ(combo.get_text(), "");
    combo.set_text("B");
    EXPECT_EQ(combo.get_text(), "B");
    combo.set_text("C");
    EXPECT_EQ(combo.get_text(), has_entry ? "C" : "");
  }
}

TEST(CellEditorClass, passes_on_how_its_content_is_laid_out) {
  const ScriptHBox box(true, 6);
  EXPECT_EQ(std::pair(box.get_homogeneous(), box.get_spacing()), std::pair(true, 6));
  ScriptAlignment place(0.25F, 1, 0.5F, 0);
  EXPECT_EQ(place.property_xalign(), 0.25F);
  EXPECT_EQ(place.property_yscale(), 0);
}

}  // namespace
}  // namespace zemblar::test

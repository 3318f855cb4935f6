// The list of all objects in the track editor.

#include <gdk/gdkkeysyms.h>
#include <gtkmm/entry.h>
#include <yaml-cpp/yaml.h>

#include "devices/tessara/device_tessara_railcom_reader.h"
#include "diagram/view.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "scripts/script.h"
#include "scripts/script_registry.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/widget_search.h"
#include "track/zone.h"
#include "ui/windows/object_list.h"

namespace zemblar::test {
namespace {

void append_rows(const Gtk::TreeNodeChildren& rows, std::string& text) {
  for (const auto& row : rows) {
    Glib::ustring name;
    row.get_value(1, name);
    text += name.raw();
    if (row.children().empty()) {
      text += ' ';
      continue;
    }
    text += "(";
    append_rows(row.children(), text);
    text += ")";
  }
}

/// The rows' names, children in brackets.
std::string rows(ObjectList& list) {
  std::string text;
  append_rows(list.get_model()->children(), text);
  return text;
}

void press_key(ObjectList& list, guint key, unsigned modifiers = 0) {
  const auto event = make_event(GDK_KEY_PRESS, list.get_window()->gobj());
  event->key.keyval = key;
  event->key.state = modifiers;
  list.event(event.get());
}

TEST(ObjectList, follows_what_is_added_renamed_removed_and_emptied) {
  auto& layout = fresh_layout();
  ObjectList list;
  const std::string others = "Points & Signals Blocks Devices Scripts )";
  EXPECT_EQ(rows(list), "New Layout(Views(View 1 )Locomotives " + others);

  auto* group = new LokGroup;
  group->add(new Lok)->set_name("Shunter");
  layout.get_loks().add(group)->set_name("Yard");
  layout.get_views().child_at(0)->set_name("Station");
  layout.set_name("Harbour");
  EXPECT_EQ(rows(list), "Harbour(Views(Station )Locomotives(Yard(Shunter ))" + others);

  group->child_at(0)->destroy();
  layout.get_views().destroy_children();
  EXPECT_EQ(rows(list), "Harbour(Views Locomotives(Yard )" + others);

  layout.new_document(true);
  EXPECT_EQ(rows(list), "New Layout(Views(View 1 )Locomotives " + others);
}

TEST(ObjectList, shows_what_is_looked_for_with_what_it_stands_in) {
  auto& layout = fresh_layout();
  auto* group = layout.get_loks().add(new LokGroup);
  group->set_name("Yard");
  auto* lok = group->add(new Lok);
  lok->set_name("Große Echse");
  layout.get_loks().add(new Lok)->set_name("Railcar");
  ObjectList list;
  list.select(*lok);
  std::vector<Object*> seen;
  list.signal_selected().connect([&](Object* object) { seen.push_back(object); });
  list.set_filter("GROSSE");
  EXPECT_EQ(rows(list), "New Layout(Locomotives(Yard(Große Echse )))");
  EXPECT_EQ(list.selected(), lok);
  EXPECT_TRUE(seen.empty()) << "its panel stays";
  layout.get_blocks().add(new Zone)->set_name("große Kurve");
  layout.get_blocks().add(new Zone);
  handle_events();
  EXPECT_EQ(rows(list), "New Layout(Locomotives(Yard(Große Echse ))Blocks(große Kurve ))");
  lok->set_name("Other");
  handle_events();
  EXPECT_EQ(rows(list), "New Layout(Locomotives(Yard(Other ))Blocks(große Kurve ))");
  EXPECT_TRUE(seen.empty()) << "what is being renamed stays";
  list.set_filter("GROSSE ");
  list.set_filter("GROSSE");
  EXPECT_EQ(rows(list), "New Layout(Blocks(große Kurve ))");
  EXPECT_EQ(seen, std::vector<Object*>{nullptr});
  list.enter();
  EXPECT_EQ(list.selected(), layout.get_blocks().child_at(0));
  list.set_filter("");
  EXPECT_EQ(rows(list),
            "New Layout(Views(View 1 )Locomotives(Yard(Other )Railcar )Points & Signals "
            "Blocks(große Kurve Zone 1 )Devices Scripts )");
}

TEST(ObjectList, moves_what_is_selected_by_keys_and_by_dragging) {
  auto& layout = fresh_layout();
  ObjectList list;
  Gtk::Window window;
  window.add(list);
  window.show_all();
  auto* group = layout.get_loks().add(new LokGroup);
  auto* lok = layout.get_loks().add(new Lok);
  auto* function = lok->add(new Function(lok));
  lok->add(new Function(lok));
  auto* zone = layout.get_blocks().add(new Zone);
  const auto press = [&](guint key) { press_key(list, key, GDK_MOD1_MASK); };
  list.select(*lok);
  for (const auto key : {GDK_KEY_Up, GDK_KEY_Up}) press(key);
  EXPECT_EQ(lok->get_position(), 0);
  EXPECT_EQ(list.selected(), lok);
  const auto row = list.get_selection()->get_selected();
  EXPECT_FALSE(list.row_expanded(list.get_model()->get_path(row))) << "as it was";
  press(GDK_KEY_Down);
  EXPECT_EQ(lok->get_position(), 1);

  /// Drops the row of one before the row at a path, as the toolkit does; whether it may be there.
  const auto drag = [&](Object& object, const std::string& to) {
    list.select(object);
    auto rows = Glib::RefPtr<ObjectRows>::cast_dynamic(list.get_model());
    Gtk::TreePath from(list.get_selection()->get_selected());
    GtkSelectionData raw{};
    raw.target = gdk_atom_intern("GTK_TREE_MODEL_ROW", FALSE);
    gtk_tree_set_row_drag_data(&raw, GTK_TREE_MODEL(rows->Gtk::TreeModel::gobj()), from.gobj());
    Gtk::TreePath path(to);
    auto* dest = GTK_TREE_DRAG_DEST(rows->Gtk::TreeModel::gobj());
    const bool may = gtk_tree_drag_dest_row_drop_possible(dest, path.gobj(), &raw);
    EXPECT_EQ(gtk_tree_drag_dest_drag_data_received(dest, path.gobj(), &raw), may);
    gtk_tree_drag_source_drag_data_delete(GTK_TREE_DRAG_SOURCE(dest), from.gobj());
    g_free(raw.data);
    return may;
  };
  for (const auto* nowhere : {"0", "0:3:0", "0:1:1:0", "0:9"}) EXPECT_FALSE(drag(*lok, nowhere));
  EXPECT_FALSE(drag(*function, "0:1:0:0"));
  EXPECT_FALSE(drag(*zone, "0:1:0"));
  EXPECT_FALSE(drag(layout.get_blocks(), "0:0"));
  auto* third = lok->add(new Function(lok));
  EXPECT_TRUE(drag(*function, "0:1:1:2"));
  EXPECT_EQ(function->get_position(), 1) << "before the third";
  third->destroy();
  EXPECT_TRUE(drag(*lok, "0:1:0:0"));
  EXPECT_EQ(lok->get_parent(), group);
  EXPECT_EQ(list.selected(), lok);
  EXPECT_EQ(rows(list),
            "New Layout(Views(View 1 )Locomotives(Locomotive Group 1(Locomotive 1(Function 2 "
            "Function 1 )))Points & Signals Blocks(Zone 1 )Devices Scripts )");
  EXPECT_FALSE(drag(*group, "0:1:0:0")) << "into itself";
  auto* late = layout.get_loks().add(new Lok);
  auto* last = layout.get_loks().add(new Lok);
  /// Where the pointer lets go: on the row of the group, or above the first row in it.
  const auto let_go = [&](const char* row, Gtk::TreeViewDropPosition where) {
    list.set_drag_dest_row(Gtk::TreePath(row), where);
    auto* context = gdk_drag_context_new();
    gboolean handled = FALSE;
    g_signal_emit_by_name(list.gobj(), "drag-drop", context, 0, 0, 0, &handled);
    g_object_unref(context);
  };
  let_go("0:1:0", Gtk::TREE_VIEW_DROP_INTO_OR_BEFORE);
  EXPECT_TRUE(drag(*late, "0:1:0:0"));
  EXPECT_EQ(late->get_position(), 1) << "on a container: last";
  let_go("0:1:0:0", Gtk::TREE_VIEW_DROP_BEFORE);
  EXPECT_TRUE(drag(*last, "0:1:0:0"));
  EXPECT_EQ(last->get_position(), 0) << "between two rows: there";
  group->destroy();
}

TEST(ObjectList, shows_a_lamp_at_a_script_that_runs_but_breaks_no_renaming_off) {
  auto& layout = fresh_layout();
  auto* script = layout.get_scripts().add(new Script);
  script->add_command(create_script_command("wait", *script));
  Gtk::Window window;
  window.set_default_size(400, 500);
  ObjectList list;
  window.add(list);
  window.show_all();
  handle_events();
  list.select(*script);
  list.grab_focus();
  const auto editor = [&window] { return dynamic_cast<Gtk::Entry*>(window.get_focus()); };
  const auto icon = [&list] {
    for (int i = 0; i < 40; ++i) g_usleep(10'000), handle_events();
    return list.get_selection()->get_selected()->get_value(ObjectRows::columns().icon).raw();
  };
  const auto before = icon();
  press_key(list, GDK_KEY_F2);
  script->run_once({});
  EXPECT_EQ(icon(), before);
  ASSERT_TRUE(editor());
  editor()->editing_done();
  EXPECT_NE(icon(), before);
  script->destroy();
  handle_events();
}

TEST(ObjectList, renames_by_every_letter_and_says_of_an_input_why_it_does_not) {
  auto& layout = fresh_layout();
  Gtk::Window window;
  ObjectList list;
  window.add(list);
  window.show_all();
  auto* lok = layout.get_loks().add(new Lok);
  lok->set_name("Lok 2");
  list.select(*lok);
  const std::vector<Gtk::CellRenderer*> cells = list.get_column(0)->get_cell_renderers();
  const Gtk::TreePath path(list.get_selection()->get_selected());
  // What is typed collates like the name that it has.
  g_signal_emit_by_name(cells.back()->gobj(), "edited", path.to_string().c_str(), "Lok ²");
  EXPECT_EQ(lok->get_name().raw(), "Lok ²");
  layout.get_loks().add(new Lok)->set_name("Taken");
  g_signal_emit_by_name(cells.back()->gobj(), "edited", path.to_string().c_str(), "Taken");
  EXPECT_EQ(get_status(), "“Taken” is taken: “Lok ²” keeps its name.");
  g_signal_emit_by_name(cells.back()->gobj(), "edited", path.to_string().c_str(), "Free");
  EXPECT_EQ(get_status(), "") << "what it told of is over";

  const auto node = YAML::Load("{serial-nr: x, inputs: [{}]}");
  auto* reader = layout.get_devices().add(new DeviceTessaraRailComReader(node));
  list.select(*reader->child_at(0));
  press_key(list, GDK_KEY_F2);
  EXPECT_EQ(get_status().find("“Input 1” cannot be renamed"), 0U) << get_status();
  clear_status();
}

TEST(ObjectList, fills_a_large_container_bit_by_bit_in_the_order_of_the_document) {
  auto& layout = fresh_layout();
  for (int i = 0; i < 3000; ++i) layout.get_blocks().add(new Zone);
  ObjectList list;
  const auto shown = [&] {
    std::vector<Object*> objects;
    const auto* blocks = &layout.get_blocks();
    for (const auto& row : list.get_model()->children()[0].children()[3].children()) {
      objects.push_back(row.get_value(ObjectRows::columns().object));
    }
    return objects == std::vector<Object*>(blocks->begin(), blocks->end());
  };
  EXPECT_FALSE(shown());
  // What is being filled may end.
  auto* group = layout.get_loks().add(new LokGroup);
  for (int i = 0; i < 300; ++i) group->add(new Lok);
  list.set_filter("loco");
  group->destroy();
  handle_events();
  list.set_filter("");
  EXPECT_FALSE(shown());
  auto* middle = layout.get_blocks().child_at(1500);
  list.select(*middle);
  layout.get_blocks().add(new Zone);
  layout.get_blocks().child_at(7)->destroy();
  layout.get_blocks().child_at(2500)->move_to(layout.get_blocks(), 3);
  Gtk::Main::iteration(false);
  layout.get_blocks().child_at(2990)->move_to(layout.get_blocks(), 2980);
  layout.get_blocks().child_at(2000)->destroy();
  handle_events();
  EXPECT_TRUE(shown());
  EXPECT_EQ(list.selected(), middle);
}

TEST(ObjectList, says_that_nothing_is_selected_before_a_selected_object_ends) {
  auto& layout = fresh_layout();
  ObjectList list;
  std::vector<Object*> seen;
  list.signal_selected().connect([&](Object* object) { seen.push_back(object); });
  auto* lok = layout.get_loks().add(new Lok);
  list.select(*lok);
  EXPECT_EQ(list.selected(), lok);
  lok->destroy();
  EXPECT_EQ(seen, (std::vector<Object*>{lok, nullptr}));
}

}  // namespace
}  // namespace zemblar::test

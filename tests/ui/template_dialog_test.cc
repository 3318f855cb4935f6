// What a person fills in for a script template.

#include "ui/scripts/template_dialog.h"

#include <gtkmm/combobox.h>

#include <algorithm>

#include "scripts/script.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/keys.h"
#include "track/signal.h"
#include "track/zone.h"
#include "ui/toolkit/made_object.h"
#include "ui/toolkit/object_button.h"

namespace zemblar::test {
namespace {

Gtk::Widget* find_field(Gtk::Widget& root, const std::string& label) {
  auto* text = dynamic_cast<Gtk::Label*>(&root);
  if (text && text->get_text().raw() == label) return text->get_mnemonic_widget();
  auto* container = dynamic_cast<Gtk::Container*>(&root);
  if (!container) return nullptr;
  for (auto* child : container->get_children()) {
    if (auto* found = find_field(*child, label)) return found;
  }
  return nullptr;
}

/// What the access key of a label leads to.
template <typename Field>
Field& field(Gtk::Widget& root, const std::string& label) {
  auto* found = find_field(root, label);
  if (!found) throw std::runtime_error("no field: " + label);
  return dynamic_cast<Field&>(*found);
}

class TemplateDialogTest : public LayoutTest {
 protected:
  TemplateDialogTest() {
    station.set_name("Station");
    line.set_name("Line");
    opener.show();
  }
  ~TemplateDialogTest() override {
    made.disconnect();
    handle_events();
  }

  TemplateDialog& open(std::string_view name) {
    const auto& all = script_templates();
    TemplateDialog::run(*std::ranges::find(all, name, &ScriptTemplate::name), opener);
    handle_events();
    auto& dialog = *shown_window<TemplateDialog>();
    give_focus(dialog);
    return dialog;
  }
  static bool can_create(Gtk::Widget& dialog) {
    return get_widget<Gtk::Button>(dialog, "Cr_eate").get_sensitive();
  }

  Zone& station = *layout().get_blocks().add(new Zone);
  Zone& line = *layout().get_blocks().add(new Zone);
  Gtk::Window opener;
  Object* shown = nullptr;
  sigc::connection made = signal_object_made().connect([this](Object& o) { shown = &o; });
};

TEST_F(TemplateDialogTest, says_what_lacks_until_scripts_can_be_made) {
  auto& dialog = open("Station Stop");
  EXPECT_FALSE(can_create(dialog));
  EXPECT_TRUE(shows(dialog, "“Platform” is still to be chosen."));
  auto& ahead = field<ObjectButton>(dialog, "Block ahead:");
  field<ObjectButton>(dialog, "Platform:").set_object(&station);
  ahead.set_object(&station);
  EXPECT_TRUE(shows(dialog, "“Platform” and “Block ahead” are the same."));
  ahead.set_object(&line);
  EXPECT_TRUE(can_create(dialog));
  line.destroy();
  EXPECT_FALSE(can_create(dialog)) << "the block has ended meanwhile";
  ahead.set_object(layout().get_blocks().add(new Zone));
  get_widget<Gtk::Button>(dialog, "Cr_eate").clicked();
  handle_events();
  ASSERT_EQ(layout().get_scripts().child_count(), 1u);
  EXPECT_EQ(shown, layout().get_scripts().child_at(0));
  EXPECT_FALSE(shown_window<TemplateDialog>());

  press_key(open("Station Stop"), GDK_Escape);
  EXPECT_FALSE(shown_window<TemplateDialog>());
  EXPECT_EQ(layout().get_scripts().child_count(), 1u);
}

TEST_F(TemplateDialogTest, two_states_of_one_signal_stay_different) {
  auto& exit = *layout().get_points().add(new Signal);
  exit.set_name("Exit");
  auto& dialog = open("Block Signal");
  field<ObjectButton>(dialog, "Block behind the signal:").set_object(&line);
  field<ObjectButton>(dialog, "Signal at stop:").set_object(&exit);
  auto& go = field<Gtk::ComboBox>(dialog, "Signal at go:");
  EXPECT_EQ(go.get_active_row_number(), 1);
  get_widget<Gtk::ComboBox>(dialog, "Signal at stop:").set_active(1);
  EXPECT_EQ(go.get_active_row_number(), 0);
  exit.destroy();
  EXPECT_FALSE(go.get_sensitive());
  EXPECT_FALSE(can_create(dialog));
  dialog.response(Gtk::RESPONSE_CANCEL);
  handle_events();
}

}  // namespace
}  // namespace zemblar::test

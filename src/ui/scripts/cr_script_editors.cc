// The in-place editors of a script's arguments.

#include <gtkmm/entry.h>
#include <gtkmm/treeview.h>

#include <algorithm>

#include "core/i18n.h"
#include "scripts/script.h"
#include "ui/scripts/cr_script.h"
#include "ui/toolkit/combo_box_text.h"
#include "ui/toolkit/script_alignment.h"
#include "ui/toolkit/script_hbox.h"
#include "ui/toolkit/spin_button.h"

namespace zemblar {
namespace {

constexpr int gap = 6;

/// The left side for an editor: at `left`, or further left if needed to show the whole editor.
int seen_from(Gtk::Widget& tree, int left, Gtk::Widget& editor) {
  const auto* list = dynamic_cast<Gtk::TreeView*>(&tree);
  if (!list) return left;
  editor.show_all();
  Gdk::Rectangle visible;
  list->get_visible_rect(visible);
  // Assumes a larger width, because in the list the theme may make the editor larger.
  const int editor_width = editor.size_request().width * 4 / 3;
  const int room = visible.get_x() + visible.get_width() - editor_width - gap;
  return std::max(0, std::min(left, room));
}

/// A managed cell editor with one widget, `left` pixels from the left side of the cell.
ScriptAlignment& place_at(int left, Gtk::Widget& widget) {
  auto* place = Gtk::manage(new ScriptAlignment(0, 0.5F, 0, 0));
  place->set_padding(0, 0, static_cast<unsigned>(left), 0);
  place->add(widget);
  return *place;
}

SpinButton& make_spin(const SpinRange& range) {
  auto* spin = Gtk::manage(new SpinButton);
  spin->set_digits(range.digits);
  spin->set_numeric();
  spin->set_range(range.min, range.max);
  spin->set_increments(range.step, 10 * range.step);
  spin->set_value(range.value);
  spin->get_accessible()->set_name(_("Value"));
  return *spin;
}

}  // namespace

Gtk::CellEditable* CRScript::edit(Gtk::Widget& tree, unsigned arg) {
  const int left = place_of(tree, arg).first;
  switch (row_.arg_type(arg)) {
    case ScriptLine::ArgType::number:
      return edit_number(tree, arg, left);
    case ScriptLine::ArgType::text:
      return edit_text(tree, arg, left);
    case ScriptLine::ArgType::custom:
      return edit_custom(tree, arg, left);
    case ScriptLine::ArgType::menu:
    case ScriptLine::ArgType::plain:
      break;
  }
  return nullptr;
}

// The line outlives its editor: the editor ends with the row, and the row is removed before the
// line ends.
template <typename Editor>
Gtk::CellEditable* CRScript::show(Editor& editor, unsigned arg, int left, const End& end) {
  editor.show_all();
  editing_ = {row_.line, arg, &editor, left};
  editor.signal_editing_done().connect(sigc::track_obj(
      [this, &editor, end] {
        editing_.reset();
        end(editor.property_editing_canceled());
      },
      *this));
  return &editor;
}

// An unchanged value is not set, because that would count as unsaved work.
Gtk::CellEditable* CRScript::edit_number(Gtk::Widget& tree, unsigned arg, int left) {
  auto* line = row_.line;
  SpinRange range;
  line->get_spin_range(arg, range);
  auto& spin = make_spin(range);
  left = seen_from(tree, left, spin);
  return show(place_at(left, spin), arg, left,
              [&spin, line, arg, before = spin.get_value()](bool cancelled) {
                const double value = spin.get_value();
                if (!cancelled && value != before) line->set_spin_value(arg, value);
              });
}

Gtk::CellEditable* CRScript::edit_text(Gtk::Widget& tree, unsigned arg, int left) {
  auto* line = row_.line;
  const auto before = line->get_arg_text(arg);
  auto& combo = *Gtk::manage(new ComboBoxText(true));
  for (const auto& name : row_.script->get_variables(line->get_variable_type(arg))) {
    combo.append(name);
  }
  combo.set_text(before);
  auto& entry = *combo.get_entry();
  entry.get_accessible()->set_name(_("Name"));
  left = seen_from(tree, left, combo);
  combo.set_focus_chain(std::vector<Gtk::Widget*>{&entry});
  return show(place_at(left, combo), arg, left, [&combo, line, arg, before](bool cancelled) {
    const auto text = combo.get_text();
    if (!cancelled && !text.empty() && text.raw() != before.raw()) line->set_text(arg, text);
  });
}

Gtk::CellEditable* CRScript::edit_custom(Gtk::Widget& tree, unsigned arg, int left) {
  auto* line = row_.line;
  auto& box = *Gtk::manage(new ScriptHBox(false, gap));
  const auto state =
      std::make_shared<std::unique_ptr<ArgumentEditor>>(line->create_editor(arg, box));
  left = seen_from(tree, left, box);
  auto& before = *Gtk::manage(new Gtk::Alignment);
  before.set_size_request(std::max(0, left - gap), -1);
  box.pack_start(before, false, false);
  box.reorder_child(before, 0);
  return show(box, arg, left, [line, arg, state](bool cancelled) {
    line->finish_editor(arg, cancelled, std::move(*state));
  });
}

}  // namespace zemblar

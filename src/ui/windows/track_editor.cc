#include "ui/windows/track_editor.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/button.h>
#include <gtkmm/imagemenuitem.h>
#include <gtkmm/separatormenuitem.h>
#include <gtkmm/separatortoolitem.h>
#include <gtkmm/stock.h>

#include <cassert>

#include "core/i18n.h"
#include "core/status.h"
#include "devices/device.h"
#include "diagram/view_class.h"
#include "ui/canvas/editor_view.h"
#include "ui/canvas/grid_menu.h"
#include "ui/status/trains_standing.h"
#include "ui/toolkit/object_ref.h"
#include "ui/windows/file_menu.h"

namespace zemblar {
namespace {

constexpr int default_width = 1100;
constexpr int default_height = 700;
constexpr int panel_width = 400;

/// Doubles underscores for a menu label, where a single one would mark the mnemonic.
Glib::ustring without_marks(const Glib::ustring& name) {
  std::string text;
  for (const char c : name.raw()) text += c == '_' ? "__" : std::string(1, c);
  return text;
}

Gtk::Toolbar& with_separator(Gtk::Toolbar& toolbar) {
  toolbar.append(*Gtk::manage(new Gtk::SeparatorToolItem));
  return toolbar;
}

/// The devices that undoing or redoing the step would end.
std::vector<const Device*> devices_ended_by(const EditStep& step, bool is_undo) {
  std::vector<const Device*> ended;
  const auto& objects = EditJournal::get().numbers().objects;
  for (const auto& part : step.parts()) {
    const auto& after = is_undo ? part.before : part.after;
    if (part.kind != EditStep::Part::Kind::object || after.exists) continue;
    if (const auto* device = dynamic_cast<const Device*>(objects.find(part.number))) {
      ended.push_back(device);
    }
  }
  return ended;
}

}  // namespace

void TrackEditor::open() {
  (new TrackEditor)->show();
}

void TrackEditor::show_object(zemblar::Object& object) {
  TrackEditor* editor = nullptr;
  for (auto* window : Gtk::Window::list_toplevels()) {
    auto* one = dynamic_cast<TrackEditor*>(window);
    if (one && one->get_visible()) editor = one;
  }
  if (!editor) {
    editor = new TrackEditor;
    editor->show();
  }
  editor->panel_.reveal(object);
  editor->present();
}

TrackEditor::TrackEditor()
    : LayoutWindow(_("Zemblar 0.1 — Track Editor")),
      history_(*this),
      tools_(with_separator(toolbar_)),
      pages_([this](View& view) { return make_canvas(view); }, ViewPages::Hidden::show) {
  set_default_size(default_width, default_height);
  append_edit_menu();
  append_new_view_button();
  sides_.pack1(pages_, true, false);
  sides_.pack2(panel_, false, false);
  sides_.set_position(default_width - panel_width);
  set_content(sides_, pages_);
  append_grid_menu(view_menu());
  pages_.signal_current_changed().connect(sigc::mem_fun(*this, &TrackEditor::refresh_panel));
  tools_.signal_chosen().connect(sigc::mem_fun(*this, &TrackEditor::use_tool));
  show_all_children();
  refresh_panel();
}

void TrackEditor::append_edit_menu() {
  auto* menu = Gtk::manage(new Gtk::Menu);
  menu->set_accel_group(get_accel_group());
  auto* item = Gtk::manage(new Gtk::MenuItem(_("_Edit"), true));
  item->set_submenu(*menu);
  menu_bar_.insert(*item, 1);
  undo_ = append_stock_item(*menu, Gtk::Stock::UNDO, [this] { step(&EditHistory::undo); });
  redo_ = append_stock_item(*menu, Gtk::Stock::REDO, [this] { step(&EditHistory::redo); });
  const auto keys = get_accel_group();
  undo_->add_accelerator("activate", keys, GDK_KEY_z, Gdk::CONTROL_MASK, Gtk::ACCEL_VISIBLE);
  redo_->add_accelerator("activate", keys, GDK_KEY_z, Gdk::CONTROL_MASK | Gdk::SHIFT_MASK,
                         Gtk::ACCEL_VISIBLE);
  redo_->add_accelerator("activate", keys, GDK_KEY_y, Gdk::CONTROL_MASK, Gtk::AccelFlags(0));
  auto* align = Gtk::manage(new Gtk::MenuItem(_("_Align to Grid"), true));
  align->signal_activate().connect([this] {
    if (auto* canvas = current_canvas()) canvas->align();
  });
  align->add_accelerator("activate", keys, GDK_KEY_g, Gdk::CONTROL_MASK, Gtk::ACCEL_VISIBLE);
  menu->append(*align);
  menu->append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  tools_.append_items(*menu);
  history_.signal_changed().connect(sigc::mem_fun(*this, &TrackEditor::refresh_edit_menu));
  menu->signal_show().connect(sigc::mem_fun(*this, &TrackEditor::refresh_edit_menu));
  refresh_edit_menu();
}

void TrackEditor::refresh_edit_menu() {
  const auto refresh = [](Gtk::MenuItem& item, const EditStep* step, const char* plain,
                          const char* named) {
    item.set_sensitive(step != nullptr);
    item.set_label(step ? Glib::ustring::compose(named, without_marks(step->get_name())) : plain);
  };
  refresh(*undo_, history_.steps().next_undo(), _("_Undo"), _("_Undo %1"));
  refresh(*redo_, history_.steps().next_redo(), _("_Redo"), _("_Redo %1"));
}

const EditStep* TrackEditor::next_step(void (EditHistory::*way)()) {
  return way == &EditHistory::undo ? history_.steps().next_undo() : history_.steps().next_redo();
}

// If the step ends a station, its trains must stand first, because no other station can stop them.
// The slot is disconnected when the window ends.
void TrackEditor::step(void (EditHistory::*way)()) {
  // First ends an unfinished edit, which becomes a separate step.
  if (auto* canvas = current_canvas()) canvas->finish();
  if (Layout::dialogs().finish_edits) Layout::dialogs().finish_edits();
  EditJournal::get().flush();
  const auto* next = next_step(way);
  if (!next) return step_now(way);
  const auto stations = devices_ended_by(*next, way == &EditHistory::undo);
  if (stations.empty()) return step_now(way);
  const sigc::slot<void> go_on =
      sigc::bind(sigc::mem_fun(*this, &TrackEditor::step_if_next), way, next);
  when_trains_stand([go_on] { go_on(); }, stations.size() == 1 ? stations.front() : nullptr);
}

void TrackEditor::step_if_next(void (EditHistory::*way)(), const EditStep* wanted) {
  EditJournal::get().flush();
  if (next_step(way) == wanted) return step_now(way);
  set_status(_("Something else has been changed meanwhile: choose that again."));
}

// Restores the selection by number, because undo may have made a new object in its place.
void TrackEditor::step_now(void (EditHistory::*way)()) {
  auto* canvas = current_canvas();
  if (canvas) canvas->finish();
  auto& drawings = EditJournal::get().numbers().drawings;
  auto* selected = canvas ? canvas->get_selected() : nullptr;
  const auto number = selected ? drawings.number_of(selected) : drawings.spare();
  (history_.*way)();
  canvas = current_canvas();
  auto* now = drawings.find(number);
  if (canvas && now && now->get_view() == pages_.current()) canvas->select(now);
}

void TrackEditor::append_new_view_button() {
  auto* button = Gtk::manage(new Gtk::Button(_("New _View"), true));
  button->signal_clicked().connect([] { Layout::get().get_views().add(new View); });
  pages_.add_to_hint(*button);
}

Gtk::Widget* TrackEditor::make_canvas(View& view) {
  auto* canvas = Gtk::manage(new EditorView(view));
  canvas->signal_selected_changed().connect(sigc::mem_fun(*this, &TrackEditor::refresh_panel));
  canvases_[&view] = canvas;
  return scrolled(canvas);
}

EditorView* TrackEditor::current_canvas() const {
  const auto canvas = canvases_.find(pages_.current());
  return canvas == canvases_.end() ? nullptr : canvas->second;
}

void TrackEditor::use_tool(const ViewClass& kind, bool existing) {
  auto* canvas = current_canvas();
  assert(canvas && "editor");
  if (!existing) return place_new(*canvas, kind);
  const auto place = [this, &kind](zemblar::Object* chosen) {
    auto* page = current_canvas();
    if (chosen && page) page->place(kind.draw(*chosen), {});
  };
  const ObjectChoices choices{.heading = _(kind.tool.heading),
                              .none = {},
                              .how_to_make = _(kind.tool.how_to_make),
                              .container = [&kind]() -> zemblar::Object& {
                                return Layout::get().get_toplevel(kind.section);
                              },
                              .offers = kind.shows};
  picker_.ask(this, nullptr, choices, place, false);
}

void TrackEditor::place_new(EditorView& canvas, const ViewClass& kind) {
  auto& made = kind.make_object();
  // Cancelling also destroys the object that was made for the tool.
  canvas.place(kind.draw(made), [object = std::make_shared<ObjectRef<zemblar::Object>>(&made)] {
    if (*object) object->get()->destroy();
  });
}

// Shows the properties of the page's selected object, or of its view.
void TrackEditor::refresh_panel() {
  auto* view = pages_.current();
  tools_.set_sensitive(view != nullptr);
  auto* canvas = view ? current_canvas() : nullptr;
  auto* selected = canvas ? canvas->get_selected() : nullptr;
  if (selected) {
    panel_.show_object(selected->get_object(), selected);
  } else {
    panel_.show_object(view);
  }
}

}  // namespace zemblar

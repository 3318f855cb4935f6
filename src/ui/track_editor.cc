#include "ui/track_editor.h"

#include <gtkmm/button.h>
#include <gtkmm/separatortoolitem.h>

#include <cassert>

#include "core/i18n.h"
#include "ui/diagram_kinds.h"
#include "ui/editor_view.h"
#include "ui/object_ref.h"

namespace zemblar {
namespace {

constexpr int default_width = 1100;
constexpr int default_height = 700;
constexpr int panel_width = 400;

Gtk::Toolbar& with_separator(Gtk::Toolbar& toolbar) {
  toolbar.append(*Gtk::manage(new Gtk::SeparatorToolItem));
  return toolbar;
}

}  // namespace

void TrackEditor::open() {
  (new TrackEditor)->show();
}

TrackEditor::TrackEditor()
    : LayoutWindow(_("Zemblar 0.1 — Track Editor")),
      tools_(with_separator(toolbar_)),
      pages_([this](View& view) { return make_canvas(view); }, ViewPages::Hidden::show) {
  set_default_size(default_width, default_height);
  append_new_view_button();
  sides_.pack1(pages_, true, true);
  sides_.pack2(panel_, false, false);
  sides_.set_position(default_width - panel_width);
  set_content(sides_);
  pages_.signal_current_changed().connect(sigc::mem_fun(*this, &TrackEditor::refresh_panel));
  tools_.signal_chosen().connect(sigc::mem_fun(*this, &TrackEditor::use_tool));
  show_all_children();
  refresh_panel();
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

void TrackEditor::use_tool(DiagramKind kind, bool existing) {
  auto* canvas = current_canvas();
  assert(canvas && "editor");
  if (!existing) return place_new(*canvas, kind);
  menu_ = std::make_unique<ObjectMenu<zemblar::Object>>(
      choices_for(kind), [canvas, kind](zemblar::Object* chosen) {
        if (chosen) canvas->place(draw_object(kind, *chosen), {});
      });
  menu_->show_all();
  menu_->popup(0, gtk_get_current_event_time());
}

void TrackEditor::place_new(EditorView& canvas, DiagramKind kind) {
  auto& made = make_object(kind);
  // What was made for the tool goes with it.
  canvas.place(draw_object(kind, made),
               [object = std::make_shared<ObjectRef<zemblar::Object>>(&made)] {
                 if (*object) object->get()->destroy();
               });
}

// The selected object of the page, or else its view.
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

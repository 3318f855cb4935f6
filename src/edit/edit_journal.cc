#include "edit/edit_journal.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cassert>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/yaml_io.h"
#include "diagram/view.h"

namespace zemblar {
namespace {

/// The object itself or its ancestor that is directly under a toplevel, whose entry contains the
/// object; the layout for its own settings. Null for a toplevel, and for an object that is not in
/// the current layout.
Object* entry_of(Object& object) {
  auto* found = &object;
  while (auto* parent = found->get_parent()) {
    if (dynamic_cast<Toplevel*>(parent)) break;
    found = parent;
  }
  if (dynamic_cast<Toplevel*>(found)) return nullptr;
  const auto* root = Object::of(g_node_get_root(object.gnode()));
  return Layout::exists() && root == &Layout::get() ? found : nullptr;
}

std::string entry_text(Object& object) {
  YAML::Emitter out;
  if (auto* view = dynamic_cast<View*>(&object)) {
    view->save_alone(out);
  } else if (dynamic_cast<Layout*>(&object)) {
    out << YAML::BeginMap << YAML::Key << "name" << YAML::Value << object.get_name()
        << YAML::EndMap;
  } else {
    out << object;
  }
  return {out.c_str(), out.size()};
}

}  // namespace

EditJournal& EditJournal::get() {
  static auto* journal = new EditJournal;  // never destroyed: layouts end at exit
  return *journal;
}

EditJournal::EditJournal() {
  DocumentWatcher::set(this);
  DiagramWatcher::set(this);
  replaced_ = Layout::signal_replaced().connect(sigc::mem_fun(*this, &EditJournal::forget));
}

// --- Steps ---

void EditJournal::begin(const Done& done) {
  if (depth_++ == 0) done_ = done;
}

void EditJournal::end() {
  assert(depth_ > 0);
  if (depth_ == 1) flush();
  if (--depth_ == 0) ignoring_ = false;
}

void EditJournal::flush() {
  auto step = take_step();
  if (step && done_) done_(std::move(step));
}

void EditJournal::discard() {
  noted_.clear();
  format_.clear();
}

std::unique_ptr<EditStep> EditJournal::take_step() {
  auto changed = std::exchange(noted_, {});
  for (auto& [part, name] : changed) {
    part.after = state_of(part);
    if (part.before.exists && part.after.exists && !part.moved)
      part.after.place = part.before.place;
  }
  std::erase_if(changed, [](const Noted& noted) { return noted.part.before == noted.part.after; });
  const auto format = std::exchange(format_, {});
  if (changed.empty()) return nullptr;
  const auto name =
      format.empty() ? name_for(changed) : Glib::ustring::compose(format, changed.front().name);
  std::vector<EditStep::Part> parts;
  for (auto& noted : changed) parts.push_back(std::move(noted.part));
  return std::make_unique<EditStep>(numbers_, name, std::move(parts));
}

Glib::ustring EditJournal::name_for(const std::vector<Noted>& changed) const {
  const auto compose = [&](const char* format, auto is_it) -> Glib::ustring {
    const auto found = std::ranges::find_if(changed, is_it, &Noted::part);
    return found == changed.end() ? "" : Glib::ustring::compose(format, found->name);
  };
  using Part = EditStep::Part;
  const std::pair<const char*, bool (*)(const Part&)> kinds[] = {
      {_("Add “%1”"), [](const Part& p) { return p.kind == Kind::object && !p.before.exists; }},
      {_("Delete “%1”"), [](const Part& p) { return p.kind == Kind::object && !p.after.exists; }},
      {_("Draw “%1”"), [](const Part& p) { return !p.before.exists; }},
      {_("Remove “%1” From View"), [](const Part& p) { return !p.after.exists; }},
      {_("Move “%1” Elsewhere"),
       [](const Part& p) { return p.moved && p.before.parent != p.after.parent; }},
      {_("Reorder “%1”"), [](const Part& p) { return p.moved; }},
      {_("Move “%1”"), [](const Part& p) { return p.kind == Kind::drawing; }},
  };
  for (const auto& [format, is_it] : kinds) {
    if (const auto name = compose(format, is_it); !name.empty()) return name;
  }
  return Glib::ustring::compose(_("Change “%1”"), changed.front().name);
}

// Also ignores the rest of the present event: what New adds to the new document is no step.
void EditJournal::forget() {
  discard();
  ignoring_ = depth_ != 0;
  signal_forgotten_.emit();
}

// --- How the document is ---

PartState EditJournal::state_of(Object& object) {
  const PrivateForm form(numbers_.objects);
  auto* parent = object.get_parent();
  return {.exists = true,
          .parent = parent ? numbers_.objects.number_of(parent) : 0,
          .place = parent ? static_cast<unsigned>(object.get_position()) : 0,
          .entry = entry_text(object)};
}

PartState EditJournal::state_of(ViewObj& object) {
  const PrivateForm form(numbers_.objects);
  auto& view = *object.get_view();
  View::use_numbers(&numbers_.drawings);
  YAML::Emitter out;
  object.save(out);
  View::use_numbers(nullptr);
  return {.exists = true,
          .parent = numbers_.objects.number_of(&view),
          .place = static_cast<unsigned>(view.place_of(&object)),
          .entry = {out.c_str(), out.size()}};
}

PartState EditJournal::state_of(const EditStep::Part& part) {
  if (part.kind == Kind::drawing) {
    auto* drawing = numbers_.drawings.find(part.number);
    return drawing ? state_of(*drawing) : PartState();
  }
  auto* object = numbers_.objects.find(part.number);
  return object ? state_of(*object) : PartState();
}

// --- What is noted ---

EditJournal::Noted* EditJournal::find(Kind kind, unsigned number) {
  const auto found = std::ranges::find_if(noted_, [=](const Noted& noted) {
    return noted.part.kind == kind && noted.part.number == number;
  });
  return found == noted_.end() ? nullptr : &*found;
}

void EditJournal::before_change(Object& object) {
  if (!is_noting()) return;
  auto* entry = entry_of(object);
  if (entry && !entry->is_deleting()) note(*entry);
}

EditJournal::Noted& EditJournal::note(Object& object) {
  const auto number = numbers_.objects.number_of(&object);
  if (auto* noted = find(Kind::object, number)) return *noted;
  return noted_.emplace_back(
      Noted{{.kind = Kind::object, .number = number, .before = state_of(object), .after = {}},
            object.get_name()});
}

// Records the moved object as a part of its own, even if another object's entry contains it. So
// undo can move it back instead of destroying it.
void EditJournal::before_move(Object& object, Object& parent) {
  if (!is_noting() || !entry_of(object)) return;
  auto& noted = note(object);
  const auto place = static_cast<unsigned>(object.get_position());
  if (!noted.part.moved) note_place(noted, place);
  find(Kind::object, numbers_.objects.number_of(&object))->part.moved = true;
  before_change(*object.get_parent());
  before_change(parent);
}

void EditJournal::before_end(Object& object) {
  const bool is_toplevel = dynamic_cast<Toplevel*>(&object) != nullptr;
  if (is_toplevel && object.get_parent() == &Layout::get()) return forget();
  before_change(object);
  auto* noted = find(Kind::object, numbers_.objects.number_of(&object));
  if (is_noting() && noted) note_place(*noted, static_cast<unsigned>(object.get_position()));
}

// Undo restores parts in the reverse order, each to the index that it had when it left. So this
// part becomes the last one, with its present index.
void EditJournal::note_place(const Noted& noted, unsigned place) {
  const auto at = noted_.begin() + (&noted - noted_.data());
  if (at->part.before.exists && !at->part.moved) at->part.before.place = place;
  std::rotate(at, at + 1, noted_.end());
}

void EditJournal::ended(const Object& object) {
  numbers_.objects.forget(&object);
}

void EditJournal::added(Object& object) {
  if (!is_noting() || entry_of(object) != &object) return;
  const auto number = numbers_.objects.number_of(&object);
  if (find(Kind::object, number)) return;
  noted_.push_back(
      {{.kind = Kind::object, .number = number, .before = {}, .after = {}}, object.get_name()});
}

EditJournal::Noted& EditJournal::note(ViewObj& object) {
  const auto number = numbers_.drawings.number_of(&object);
  if (auto* noted = find(Kind::drawing, number)) return *noted;
  auto* shown = object.get_object();
  return noted_.emplace_back(
      Noted{{.kind = Kind::drawing, .number = number, .before = state_of(object), .after = {}},
            shown ? shown->get_name() : ""});
}

void EditJournal::before_change(ViewObj& object) {
  if (is_noting() && object.get_object()) note(object);
}

void EditJournal::before_move(ViewObj& object) {
  if (is_noting()) note(object).part.moved = true;
}

void EditJournal::before_removal(ViewObj& object) {
  if (!is_noting() || !object.get_object()) return;
  note_place(note(object), static_cast<unsigned>(object.get_view()->place_of(&object)));
}

void EditJournal::removed(ViewObj& object) {
  numbers_.drawings.forget(&object);
}

void EditJournal::added(ViewObj& object) {
  if (!is_noting() || !object.get_object()) return;
  const auto number = numbers_.drawings.number_of(&object);
  if (find(Kind::drawing, number)) return;
  noted_.push_back({{.kind = Kind::drawing, .number = number, .before = {}, .after = {}},
                    object.get_object()->get_name()});
}

}  // namespace zemblar

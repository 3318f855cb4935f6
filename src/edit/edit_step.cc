#include "edit/edit_step.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>

#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/private_form.h"
#include "core/status.h"
#include "devices/device.h"
#include "devices/port/hw_list.h"
#include "diagram/view.h"
#include "diagram/view_class.h"
#include "edit/edit_journal.h"

namespace zemblar {
namespace {

using Part = EditStep::Part;
using Kind = Part::Kind;

/// While one exists, entries are read with the numbers of steps, and nothing is recorded.
class Replay {
 public:
  explicit Replay(PartNumbers& numbers) : form_(numbers.objects) {
    View::use_numbers(&numbers.drawings);
  }
  ~Replay() { View::use_numbers(nullptr); }
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

 private:
  PrivateForm form_;
  const EditJournal::Pause pause_;
};

/// The key whose value differs between two entries, if there is only one and the value is a scalar;
/// else empty.
std::string changed_setting(const PartState& before, const PartState& after) {
  const EntryChange change(YAML::Load(before.entry), YAML::Load(after.entry));
  std::vector<std::string> keys;
  for (const auto& item : change.entry()) {
    const auto& key = item.first.Scalar();
    if (change.differs(key.c_str())) keys.push_back(key);
  }
  const bool plain = keys.size() == 1 && change.at(keys[0].c_str()).IsScalar();
  return plain ? keys[0] : "";
}

/// Moves the object, unless that is impossible because `parent` has been moved into the object
/// meanwhile.
void move_if_possible(Object& object, Object& parent, unsigned place) {
  if (object.can_move_to(parent)) object.move_to(parent, place);
}

/// Runs `restore`. If it throws, because the entry does not fit other changes made since, the rest
/// of the part stays unchanged, and the status line says so.
template <typename Restore>
void try_restore(const Restore& restore) {
  try {
    restore();
  } catch (const YAML::Exception& problem) {
    set_status(Glib::ustring::compose(_("Not all of the step could be taken back (%1)"),
                                      readable(problem.what())));
  }
}

bool is_one_setting(const EditStep& step) {
  if (step.parts().size() != 1) return false;
  const auto& part = step.parts().front();
  return part.kind == Kind::object && part.before.exists && part.after.exists && !part.moved;
}

}  // namespace

bool EditStep::undo() {
  return apply(&Part::after, &Part::before);
}

bool EditStep::redo() {
  return apply(&Part::before, &Part::after);
}

EditStep* EditStep::merge(EditStep& next) {
  if (!is_one_setting(*this) || !is_one_setting(next)) return nullptr;
  auto& mine = parts_.front();
  const auto& others = next.parts_.front();
  if (mine.number != others.number || mine.after != others.before) return nullptr;
  const auto setting = changed_setting(mine.before, mine.after);
  if (setting.empty() || setting != changed_setting(others.before, others.after)) return nullptr;
  mine.after = others.after;
  return this;
}

bool EditStep::is_void() const {
  return std::ranges::all_of(parts_, [](const Part& part) { return part.before == part.after; });
}

bool EditStep::finds(State state) const {
  return std::ranges::all_of(parts_, [&](const Part& part) {
    if (!(part.*state).exists) return true;
    return part.kind == Kind::object ? numbers_->objects.find(part.number) != nullptr
                                     : numbers_->drawings.find(part.number) != nullptr;
  });
}

// First moves parts out of objects that may be about to end. Then ends parts, so that names and
// joins are free for those made again. Objects are made before the diagram objects that show them.
// For undo, parts are restored in reverse order, because each index was valid when it was noted.
bool EditStep::apply(State from, State to) {
  if (!finds(from)) return false;
  const Replay replay(*numbers_);
  std::vector<const Part*> order;
  for (const auto& part : parts_) order.push_back(&part);
  if (to == &Part::before) {
    std::ranges::reverse(order);
  } else {
    std::ranges::stable_sort(order, {}, [=](const Part* part) { return (part->*to).place; });
  }
  move_out(from, to);
  end_parts(from, to);
  make_objects(order, from, to);
  restore_objects(from, to);
  make_drawings(order, from, to);
  return true;
}

// Moves the object to the end of its new parent, so that it does not shift the indexes of the
// others. An object whose parent does not exist yet is destroyed, and made again with the parent,
// under the same name.
void EditStep::move_out(State from, State to) const {
  for (const auto& part : parts_) {
    const auto& was = part.*from;
    const auto& is = part.*to;
    if (part.kind != Kind::object || !part.moved || !was.exists || !is.exists) continue;
    auto* object = numbers_->objects.find(part.number);
    auto* parent = numbers_->objects.find(is.parent);
    if (!object || (was.parent == is.parent && to == &Part::before)) continue;
    if (parent) {
      move_if_possible(*object, *parent, parent->child_count());
    } else {
      object->destroy();
    }
  }
}

void EditStep::end_parts(State from, State to) const {
  for (const auto& part : parts_) {
    if (!(part.*from).exists || (part.*to).exists || part.kind != Kind::drawing) continue;
    if (auto* drawing = numbers_->drawings.find(part.number)) drawing->remove();
  }
  for (const auto& part : parts_) {
    if (!(part.*from).exists || (part.*to).exists || part.kind != Kind::object) continue;
    if (auto* object = numbers_->objects.find(part.number)) object->destroy();
  }
}

void EditStep::make_objects(const std::vector<const Part*>& order, State from, State to) const {
  bool devices = false;
  for (const auto* part : order) {
    const auto& state = part->*to;
    if (part->kind != Kind::object || !state.exists) continue;
    auto* object = numbers_->objects.find(part->number);
    auto* parent = numbers_->objects.find(state.parent);
    if (object && parent && part->moved) move_if_possible(*object, *parent, state.place);
    if (object || !parent || (part->*from).exists) continue;
    const auto entry = YAML::Load(state.entry);
    const auto* document_class = find_document_class(entry.Tag());
    if (!document_class) continue;
    try_restore([&] {
      auto* made = parent->insert(document_class->load(entry), state.place);
      devices = devices || dynamic_cast<Device*>(made) != nullptr;
    });
  }
  Layout::get().resolve();
  // Offers ports again, so that the new device finds its hardware.
  if (devices) HWList::get().refresh();
}

void EditStep::restore_objects(State from, State to) const {
  for (const auto& part : parts_) {
    const auto& was = part.*from;
    const auto& is = part.*to;
    if (part.kind != Kind::object || !was.exists || !is.exists || was.entry == is.entry) continue;
    auto* object = numbers_->objects.find(part.number);
    if (!object) continue;
    try_restore([&] { object->restore({YAML::Load(was.entry), YAML::Load(is.entry)}); });
  }
  Layout::get().resolve();
}

void EditStep::make_drawings(const std::vector<const Part*>& order, State from, State to) const {
  for (const auto* part : order) {
    const auto& was = part->*from;
    const auto& is = part->*to;
    if (part->kind == Kind::drawing && was.exists && is.exists && was.entry != is.entry) {
      replace_drawing(*part, to);
    }
  }
  for (const auto* part : order) {
    const auto& state = part->*to;
    if (part->kind != Kind::drawing || !state.exists) continue;
    auto* view = dynamic_cast<View*>(numbers_->objects.find(state.parent));
    auto* drawing = numbers_->drawings.find(part->number);
    if (view && drawing && part->moved) view->move_to(drawing, state.place);
    if (!view || drawing) continue;
    const auto entry = YAML::Load(state.entry);
    drawing = ViewClass::find(entry.Tag())->load(entry);
    numbers_->drawings.assign(drawing, part->number);
    view->insert_object(drawing, state.place);
  }
  Layout::get().resolve();
  for (const auto* part : order) {
    auto* drawing = part->kind == Kind::drawing ? numbers_->drawings.find(part->number) : nullptr;
    if (drawing && !drawing->get_object()) drawing->remove();
  }
}

// Makes a new diagram object in its place, because only its constructor reads an entry.
void EditStep::replace_drawing(const Part& part, State to) const {
  auto* former = numbers_->drawings.find(part.number);
  if (!former || !former->get_view()) return;
  auto& view = *former->get_view();
  const auto place = view.place_of(former);
  const auto entry = YAML::Load((part.*to).entry);
  view.remove_object(former);
  auto* drawing = ViewClass::find(entry.Tag())->load(entry);
  numbers_->drawings.assign(drawing, part.number);
  view.insert_object(drawing, place);
}

}  // namespace zemblar

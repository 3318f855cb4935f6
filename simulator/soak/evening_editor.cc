#include "simulator/soak/evening_editor.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "core/layout.h"
#include "devices/command_station.h"
#include "diagram/view.h"
#include "diagram/view_crossing.h"
#include "diagram/view_label.h"
#include "diagram/view_link_node.h"
#include "diagram/view_point.h"
#include "diagram/view_scissor.h"
#include "diagram/view_signal.h"
#include "diagram/view_zone.h"
#include "edit/edit_journal.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "scripts/script.h"
#include "scripts/script_registry.h"

namespace zemblar::simulator {
namespace {

constexpr std::array names{"Zone 1",   "Express 103", "East Curve", "Yard", "Große Echse",
                           "Straight", "Horn",        "",           " ",    "a: [b, {c"};
constexpr double table_width = 900;
constexpr double table_height = 600;

template <typename T>
void collect(const Object& parent, std::vector<T*>& found) {
  for (auto* child : parent) {
    if (auto* one = dynamic_cast<T*>(child)) found.push_back(one);
    collect(*child, found);
  }
}

/// A picture of what has none yet; null for what no view shows.
ViewObj* picture_of(Object& object, const Vector& place) {
  if (auto* zone = dynamic_cast<Zone*>(&object)) return new ViewZone(*zone, place);
  if (auto* point = dynamic_cast<Point*>(&object)) return new ViewPoint(*point, place);
  if (auto* scissor = dynamic_cast<Scissor*>(&object)) return new ViewScissor(*scissor, place);
  if (auto* signal = dynamic_cast<Signal*>(&object)) return new ViewSignal(*signal, place);
  if (auto* crossing = dynamic_cast<Crossing*>(&object)) return new ViewCrossing(*crossing, place);
  return nullptr;
}

/// What a person can add by a menu and a railway has several of. The station and the bus are there.
bool can_be_added(const DocumentClass& one) {
  return one.make && one.tag.find("ESU") == std::string::npos &&
         one.tag.find("Tessara/BUS") == std::string::npos;
}

}  // namespace

const std::vector<EveningEditor::Deed>& EveningEditor::deeds() {
  using Editor = EveningEditor;
  static const std::vector<Deed> all{
      {"undo", 40, &Editor::undo},
      {"redo", 15, &Editor::redo},
      {"add", 6, &Editor::add},
      {"add part", 4, &Editor::add_part},
      {"draw", 3, &Editor::draw},
      {"rename", 5, &Editor::rename},
      {"move", 5, &Editor::move},
      {"delete", 6, &Editor::remove},
      {"change block", 3, &Editor::change_block},
      {"change locomotive", 4, &Editor::change_lok},
      {"change decoder", 6, &Editor::change_decoder},
      {"change function", 3, &Editor::change_function},
      {"change point", 3, &Editor::change_point},
      {"change output", 3, &Editor::change_output},
      {"change script", 5, &Editor::change_script},
      {"change device", 1, &Editor::change_device},
      {"change view", 2, &Editor::change_view},
      {"change drawing", 6, &Editor::change_drawing},
      {"join", 2, &Editor::join},
  };
  return all;
}

EveningEditor::EveningEditor(Chance& chance) : chance_(chance) {
  forgotten_ = EditJournal::get().signal_forgotten().connect([this] { steps_.clear(); });
}

std::string_view EveningEditor::act() {
  const auto& deed = chance_.weighted(deeds());
  record([&] { (this->*deed.act)(); });
  return deed.name;
}

void EveningEditor::record(const std::function<void()>& work) {
  auto& journal = EditJournal::get();
  journal.begin([this](std::unique_ptr<EditStep> step) { steps_.record(std::move(step)); });
  work();
  journal.end();
}

// --- Choices ---

unsigned EveningEditor::below(std::size_t count) {
  return static_cast<unsigned>(chance_.below(count));
}

template <typename T>
T* EveningEditor::some() {
  std::vector<T*> found;
  collect(Layout::get(), found);
  return found.empty() ? nullptr : found[below(found.size())];
}

Glib::ustring EveningEditor::some_name() {
  return names[below(names.size())];
}

// Half of them are those of others.
Address EveningEditor::some_address() {
  auto* other = chance_.happens(0.5) ? some<Lok>() : nullptr;
  if (other) return other->get_decoders().front()->get_address();
  return Address(1 + below(chance_.happens(0.5) ? Address::max_short : Address::max_long));
}

// --- Steps ---

void EveningEditor::undo() {
  EditJournal::get().flush();
  for (auto count = 1 + below(3); count > 0; --count) steps_.undo();
}

void EveningEditor::redo() {
  EditJournal::get().flush();
  for (auto count = 1 + below(3); count > 0; --count) steps_.redo();
}

// --- Objects come and go ---

void EveningEditor::add() {
  std::vector<DocumentClass> kinds;
  for (const auto& [tag, one] : document_classes()) {
    if (can_be_added(one)) kinds.push_back(one);
  }
  const auto& kind = kinds[below(kinds.size())];
  auto* object = Layout::get().get_toplevel(kind.section).add(kind.make());
  auto* view = some<View>();
  auto* picture = view ? picture_of(*object, {table_width / 2, table_height / 2}) : nullptr;
  if (picture) view->add_object(picture);
}

void EveningEditor::add_part() {
  if (auto* lok = some<Lok>(); lok && chance_.happens(0.4)) {
    lok->add(new Function(lok));
  } else if (lok && chance_.happens(0.3)) {
    lok->add_decoder();
  } else if (auto* point = some<PointBase>(); point && chance_.happens(0.5)) {
    if (!point->has_fixed_states()) point->add_state();
  } else if (point) {
    point->add_output();
  }
}

void EveningEditor::draw() {
  auto* view = some<View>();
  auto* zone = some<Zone>();
  if (view && zone) view->add_object(new ViewLabel(*zone, {chance_.fraction() * table_width, 0}));
}

void EveningEditor::rename() {
  auto* object = some<Object>();
  if (!dynamic_cast<Toplevel*>(object)) object->set_name(some_name());
}

void EveningEditor::move() {
  auto* object = some<Object>();
  auto* other = chance_.happens(0.5) ? object->get_parent() : some<Object>();
  if (object->can_move_to(*other)) object->move_to(*other, below(other->child_count() + 1));
}

void EveningEditor::remove() {
  auto* object = some<Object>();
  if (!object->get_deletable()) return;
  if (auto* device = dynamic_cast<Device*>(object)) return remove_device(*device);
  object->destroy();
}

void EveningEditor::remove_device(Device& device) {
  const auto go_on = [this, lives = device.liveness(), &device] {
    if (*lives) record([&device] { device.destroy(); });
  };
  static_cast<void>(standing_.begin(go_on, &device));
}

// --- Settings ---

void EveningEditor::change_block() {
  auto* block = some<Block>();
  if (!block) return;
  if (chance_.happens(0.6)) return block->set_invert(!block->get_invert());
  block->set_input(chance_.happens(0.3) ? nullptr : some<Device>());
}

void EveningEditor::change_lok() {
  auto* lok = some<Lok>();
  if (!lok) return;
  switch (below(4)) {
    case 0:
      return lok->set_top_speed(static_cast<int>(below(300)));
    case 1:
      return lok->set_attribute(some_name(), some_name());
    case 2:
      return lok->remove_attribute(some_name());
    default:
      if (lok->get_decoders().size() > 1) lok->remove_decoder(below(lok->get_decoders().size()));
  }
}

void EveningEditor::change_decoder() {
  auto* lok = some<Lok>();
  if (!lok) return;
  const auto decoder = lok->get_decoders()[below(lok->get_decoders().size())];
  switch (below(6)) {
    case 0:
      return decoder->set_address(some_address());
    case 1:
      return decoder->set_commands_enabled(!decoder->get_commands_enabled());
    case 2:
      return decoder->set_device(chance_.happens(0.5) ? nullptr : some<CommandStation>());
    case 3:
      return decoder->set_speed_ratio(2 * chance_.fraction());
    case 4:
      return decoder->set_type(static_cast<DecoderType>(below(4)));
    default:
      decoder->set_reverse(!decoder->get_reverse());
  }
}

void EveningEditor::change_function() {
  auto* function = some<Function>();
  if (!function) return;
  switch (below(5)) {
    case 0:
      return function->set_function(below(Function::max_function + 1));
    case 1:
      return function->set_type(static_cast<Function::Type>(below(4)));
    case 2:
      return function->set_hidden(!function->get_hidden());
    case 3:
      return function->set_on_image(some_name());
    default:
      function->set_decoder(below(function->get_lok()->get_decoders().size()));
  }
}

void EveningEditor::change_point() {
  auto* point = some<PointBase>();
  if (!point) return;
  const auto states = point->states();
  const auto count = static_cast<unsigned>(point->get_outputs().size());
  if (count == 0 || states.empty() || chance_.happens(0.2)) {
    if (count > 0) point->remove_output(1 + below(count));
    return;
  }
  states[below(states.size())]->set_setting(
      point->get_output(1 + below(count)),
      chance_.happens(0.5) ? PointStateOutput::on() : PointStateOutput::off());
}

void EveningEditor::change_output() {
  auto* point = some<PointBase>();
  if (!point || point->get_outputs().empty()) return;
  auto& output = point->get_output(1 + below(point->get_outputs().size()));
  switch (below(4)) {
    case 0:
      return output.set_type(static_cast<PointOutput::Type>(below(4)));
    case 1:
      return output.set_output(1 + below(4));
    case 2:
      return output.set_device(chance_.happens(0.5) ? nullptr : some<CommandStation>());
    default:
      output.set_address({address_kind(output.get_type()),
                          1 + below(Address::max_number(address_kind(output.get_type())))});
  }
}

void EveningEditor::change_script() {
  auto* script = some<Script>();
  if (!script) return;
  const auto commands = script->get_num_commands();
  const auto conditions = script->get_num_conditions();
  const auto some_key = [this](const auto& kinds) {
    return std::next(kinds.begin(), static_cast<long>(chance_.below(kinds.size())))->first;
  };
  switch (below(7)) {
    case 0:
      script->add_command(create_script_command(some_key(script_cmds()), *script));
      return;
    case 1:
      script->add_condition(create_script_event(some_key(script_events())));
      return;
    case 2:
      return script->move_command(below(commands), below(commands));
    case 3:
      return script->remove_command(below(commands));
    case 4:
      return script->move_condition(below(conditions), below(conditions));
    case 5:
      return script->remove_condition(below(conditions));
    default:
      script->set_while(!script->get_while());
  }
}

void EveningEditor::change_device() {
  auto* station = some<CommandStation>();
  if (station) station->set_use_as_default(!station->get_use_as_default());
}

// --- Drawings ---

void EveningEditor::change_view() {
  auto* view = some<View>();
  if (!view) return;
  if (chance_.happens(0.5)) return view->set_hidden(!view->get_hidden());
  view->set_width(chance_.fraction() * table_width);
}

void EveningEditor::change_drawing() {
  auto* view = some<View>();
  if (!view || view->get_objects().empty()) return;
  const auto drawing = view->get_objects()[below(view->get_objects().size())];
  switch (below(5)) {
    case 0:
      return drawing->move_to_top();
    case 1:
      return drawing->move_to_bottom();
    case 2:
      return drawing->remove();
    default: {
      const ViewTag whole(drawing.operator->());
      drawing->drag_start(whole, {0, 0});
      drawing->drag_move(whole, {chance_.fraction() * table_width, 0});
    }
  }
}

// Mostly ends that are joined already: these are taken apart.
void EveningEditor::join() {
  auto* view = some<View>();
  if (!view || view->get_objects().empty()) return;
  const auto some_end = [&] {
    const auto drawing = view->get_objects()[below(view->get_objects().size())];
    constexpr std::array ends{"left", "right", "common", "top-left", "bottom-right"};
    return drawing->get_link_node(ends[below(ends.size())]);
  };
  auto* end = some_end();
  auto* other = some_end();
  if (!end || !end->get_block_link()) return;
  if (end->get_block_link()->is_connected()) return end->get_block_link()->disconnect();
  if (other && other != end && end->can_connect(*other)) end->connect(*other);
}

}  // namespace zemblar::simulator

#include "scripts/script_event_occupied.h"

#include "core/collections.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/yaml_io.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"
#include "track/block.h"

namespace zemblar {
namespace {

void register_script_event_occupied() {
  register_script_event<ScriptEventOccupied>("occupied", N_("Block is (un)occupied"));
}
[[maybe_unused]] const bool registered = (register_script_event_occupied(), true);

constexpr auto any_word = "Any";
constexpr auto this_word = "This";

Glib::ustring occupied_text(bool occupied) {
  return occupied ? _("Occupied") : _("Unoccupied");
}

}  // namespace

// --- In a file ---

// A block that is read is resolved and its end is watched, but not its occupancy.
ScriptEventOccupied::ScriptEventOccupied(const YAML::Node& entry) : any(false) {
  const auto subject = element(entry, 2);
  element(entry, 3) >> occupied;
  any = is_word(subject, any_word);
  if (any || is_word(subject, this_word)) return;
  subject >> block;
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        follow();
        signal_line_changed().emit(1);
        return true;
      },
      *this));
}

void ScriptEventOccupied::save(YAML::Emitter& out) const {
  if (block) {
    out << static_cast<const Object*>(block);
  } else {
    out << (any ? any_word : this_word);
  }
  out << occupied;
}

// --- As a sentence ---

Glib::ustring ScriptEventOccupied::get_format() const {
  return _("%1 is %2");
}

std::vector<ScriptLine::Argument> ScriptEventOccupied::arguments() {
  const auto subject = [this]() -> Glib::ustring {
    if (block) return block->get_name();
    return any ? _("Any Block") : _("This Block");
  };
  const auto states = [this] {
    const auto offer = [this](bool on) {
      return choice(occupied_text(on), [this, on] { choose_occupied(on); });
    };
    return std::vector{offer(true), offer(false)};
  };
  return {{.type = ArgType::menu, .text = subject, .choices = [this] { return block_choices(); }},
          {.type = ArgType::menu,
           .text = [this] { return occupied_text(occupied); },
           .choices = states}};
}

std::vector<ScriptChoice> ScriptEventOccupied::block_choices() {
  std::vector<ScriptChoice> all;
  all.push_back(choice(_("Any Block"), [this] { choose_any(); }));
  all.push_back(choice(_("This Block"), [this] { choose_this(); }));
  std::vector<Block*> blocks;
  collect(Layout::get(), blocks);
  if (!blocks.empty()) all.push_back({.text = {}, .choose = {}, .separator = true});
  for (auto* offered : blocks) {
    all.push_back(choice(
        offered->get_name(), [this, offered] { choose(offered); }, offered));
  }
  return all;
}

// --- What holds ---

void ScriptEventOccupied::generate_instances(const EventInstance& partial) {
  if (block) return test(block);
  if (!any) {
    if (partial.block) test(partial.block);
    return;
  }
  for (auto* member : Layout::get().get_all_blocks().members()) test(static_cast<Block*>(member));
}

void ScriptEventOccupied::test(Block* tested) const {
  if (tested->is_deleting()) return;
  auto* lok = tested->get_lok();
  const bool is_occupied = lok || tested->occupied();
  if (is_occupied == occupied) yield({tested, lok});
}

// --- What is watched ---

bool ScriptEventOccupied::is_armed() const {
  return block || any ? occupied_changed_.connected() : !opens_alternative();
}

bool ScriptEventOccupied::is_settled() const {
  return !block || !block->is_deleting();
}

bool ScriptEventOccupied::sleeps() const {
  return (block || any) && !is_armed();
}

void ScriptEventOccupied::arm() {
  awake_ = true;
  if (block) return choose(block);
  return any ? choose_any() : choose_this();
}

void ScriptEventOccupied::disarm() {
  awake_ = false;
  cancel_trigger();
  if (!occupied_changed_.connected()) return;
  occupied_changed_.disconnect();
  lok_changed_.disconnect();
  signal_line_changed().emit(1);
}

Glib::ustring ScriptEventOccupied::asleep_because() const {
  if (is_armed()) return {};
  return sleeps() ? _("This condition sleeps: choose its block, or “Start Scripts”, and it watches "
                      "the railway.")
                  : _("No line before this one finds a block that it could be about.");
}

void ScriptEventOccupied::set_subject(Block* chosen, bool is_any) {
  if (chosen != block || is_any != any) signal_changing().emit();
  occupied_changed_.disconnect();
  lok_changed_.disconnect();
  ended_.disconnect();
  block = chosen;
  any = is_any;
}

// When the block ends, the subject becomes "This Block". If the condition is armed, that triggers
// it.
void ScriptEventOccupied::follow() {
  if (!block) return;
  ended_ = block->signal_deleted().connect([this] {
    if (is_armed()) return choose_this();
    set_subject(nullptr, false);
    signal_line_changed().emit(1);
  });
}

void ScriptEventOccupied::choose_any() {
  set_subject(nullptr, true);
  awake_ = true;
  auto& all = Layout::get().get_all_blocks();
  occupied_changed_ = all.signal_changed().connect([this] { fire(); });
  lok_changed_ = all.signal_lok_changed().connect([this] { trigger(); });
  announce(1);
}

void ScriptEventOccupied::choose_this() {
  set_subject(nullptr, false);
  announce(1);
}

void ScriptEventOccupied::choose(Block* chosen) {
  set_subject(chosen, false);
  awake_ = true;
  follow();
  occupied_changed_ = chosen->signal_occupied().connect([this] { fire(); });
  lok_changed_ = chosen->signal_lok_changed().connect([this] { trigger(); });
  announce(1);
}

void ScriptEventOccupied::choose_occupied(bool on) {
  if (on == occupied) return;
  signal_changing().emit();
  occupied = on;
  announce(2);
}

// A handler of the first signal may end the line.
void ScriptEventOccupied::announce(unsigned arg) {
  const sigc::slot<void> then = sigc::mem_fun(*this, &ScriptEventOccupied::fire);
  signal_line_changed().emit(arg);
  then();
}

void ScriptEventOccupied::fire() {
  signal_triggered().emit();
}

}  // namespace zemblar

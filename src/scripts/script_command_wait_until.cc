#include "scripts/script_command_wait_until.h"

#include <chrono>
#include <cmath>

#include "core/i18n.h"
#include "locomotives/lok.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"
#include "scripts/script_wait.h"

namespace zemblar {
namespace {

void register_script_command_wait_block() {
  register_script_command<ScriptCommandWaitBlock>(
      "wait_block", N_("Wait until block is free or occupied"), MenuPart::additions);
}
void register_script_command_wait_point() {
  register_script_command<ScriptCommandWaitPoint>(
      "wait_point", N_("Wait until point or signal is…"), MenuPart::additions);
}
[[maybe_unused]] const bool registered =
    (register_script_command_wait_block(), register_script_command_wait_point(), true);

constexpr auto free_word = "free";
constexpr auto occupied_word = "occupied";
constexpr unsigned longest = 3600;  // seconds

Glib::ustring occupied_text(bool occupied) {
  return occupied ? C_("Wait", "occupied") : C_("Wait", "free");
}

}  // namespace

// --- Both ---

void ScriptCommandWaitUntil::run(ScriptContext& context) {
  wait_until(
      context, [&] { return look(context) != Outlook::waits; },
      [&](const sigc::slot<void>& changed) { return watch(context, changed); },
      std::chrono::seconds(limit_));
  if (context.is_cancelled() || look(context) != Outlook::gone) return;
  context.give_up(_("What it waits for is not there."));
}

ScriptLine::Argument ScriptCommandWaitUntil::limit_argument(unsigned arg) {
  return {.type = ArgType::number,
          .text = [this]() -> Glib::ustring {
            return limit_ == 0 ? Glib::ustring(_("for any time"))
                               : Glib::ustring::compose(_("%1 seconds at most"), limit_);
          },
          .range =
              [this] {
                return SpinRange{.min = 0,
                                 .max = longest,
                                 .value = static_cast<double>(limit_),
                                 .step = 1,
                                 .digits = 0};
              },
          .set_number =
              [this, arg](double seconds) {
                change(arg, limit_,
                       static_cast<unsigned>(
                           std::clamp(std::round(seconds), 0.0, static_cast<double>(longest))));
              }};
}

void ScriptCommandWaitUntil::read_limit(const YAML::Node& node) {
  node >> limit_;
  if (limit_ > longest) throw YAML::InvalidScalar(node.Mark());
}

// --- For a block ---

ScriptCommandWaitBlock::ScriptCommandWaitBlock(Script& owner) : ScriptCommandWaitUntil(owner) {
  block_.signal_changing().connect(signal_changing().make_slot());
  block_.signal_changed().connect([this] { signal_line_changed().emit(1); });
}

ScriptCommandWaitBlock::ScriptCommandWaitBlock(Script& owner, const YAML::Node& entry)
    : ScriptCommandWaitBlock(owner) {
  block_.load(entry, 1);
  const auto state = element(entry, 2);
  occupied_ = is_word(state, occupied_word);
  if (!occupied_ && !is_word(state, free_word)) throw YAML::InvalidScalar(state.Mark());
  read_limit(element(entry, 3));
}

void ScriptCommandWaitBlock::save(YAML::Emitter& out) const {
  block_.save(out);
  out << (occupied_ ? occupied_word : free_word) << get_limit();
}

Glib::ustring ScriptCommandWaitBlock::get_format() const {
  return _("Wait until %1 is %2 (%3)");
}

std::vector<ScriptLine::Argument> ScriptCommandWaitBlock::arguments() {
  return {block_argument(1, block_), one_of(2, occupied_, {false, true}, occupied_text),
          limit_argument(3)};
}

ScriptCommandWaitUntil::Outlook ScriptCommandWaitBlock::look(const ScriptContext& context) const {
  const auto* block = block_.target(context);
  if (!block) return Outlook::gone;
  const auto* holder = block->get_lok();
  if (!occupied_ && holder && holder == context.lok()) {
    return holder->get_brake() ? Outlook::waits : Outlook::holds;
  }
  const bool is_occupied = holder || block->occupied();
  return is_occupied == occupied_ ? Outlook::holds : Outlook::waits;
}

ScriptCommandWaitUntil::Watches ScriptCommandWaitBlock::watch(const ScriptContext& context,
                                                              const sigc::slot<void>& changed) {
  auto* block = block_.target(context);
  Watches watches;
  watches.emplace_back(block->signal_occupied().connect(changed));
  watches.emplace_back(block->signal_lok_changed().connect(changed));
  if (auto* lok = context.lok()) watches.emplace_back(lok->signal_brake_changed().connect(changed));
  watches.emplace_back(block->signal_deleted().connect(changed));
  return watches;
}

// --- For a point or signal ---

ScriptCommandWaitPoint::ScriptCommandWaitPoint(Script& owner) : ScriptCommandWaitUntil(owner) {
  subject_.signal_changing().connect(signal_changing().make_slot());
  subject_.signal_changed().connect([this] { announce_first_two(); });
}

ScriptCommandWaitPoint::ScriptCommandWaitPoint(Script& owner, const YAML::Node& entry)
    : ScriptCommandWaitPoint(owner) {
  subject_.load(entry, 1);
  read_limit(element(entry, 3));
}

void ScriptCommandWaitPoint::save(YAML::Emitter& out) const {
  subject_.save(out);
  out << get_limit();
}

Glib::ustring ScriptCommandWaitPoint::get_format() const {
  return _("Wait until %1 is %2 (%3)");
}

std::vector<ScriptLine::Argument> ScriptCommandWaitPoint::arguments() {
  auto all = point_arguments(
      subject_,
      [this](PointBase* point) {
        if (point == subject_.get_point()) return;
        signal_changing().emit();
        subject_.set_point(point);
        announce_first_two();
      },
      [this](PointState* state) {
        if (state == subject_.get_state()) return;
        signal_changing().emit();
        subject_.set_state(state);
        signal_line_changed().emit(2);
      });
  all.push_back(limit_argument(3));
  return all;
}

ScriptCommandWaitUntil::Outlook ScriptCommandWaitPoint::look(
    const ScriptContext& /*context*/) const {
  const auto* point = subject_.get_point();
  if (!point || point->is_deleting() || !subject_.get_state()) return Outlook::gone;
  return subject_.holds() ? Outlook::holds : Outlook::waits;
}

ScriptCommandWaitUntil::Watches ScriptCommandWaitPoint::watch(const ScriptContext& /*context*/,
                                                              const sigc::slot<void>& changed) {
  auto* point = subject_.get_point();
  Watches watches;
  watches.emplace_back(point->signal_state_changed().connect(changed));
  watches.emplace_back(point->signal_deleted().connect(changed));
  watches.emplace_back(subject_.get_state()->signal_deleted().connect(changed));
  return watches;
}

}  // namespace zemblar

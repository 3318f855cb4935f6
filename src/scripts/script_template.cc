#include "scripts/script_template.h"

#include <algorithm>
#include <cassert>
#include <string>

#include "core/i18n.h"
#include "core/layout.h"
#include "scripts/script.h"
#include "scripts/script_command_reserve.h"
#include "scripts/script_command_save.h"
#include "scripts/script_command_set_direction.h"
#include "scripts/script_command_set_point.h"
#include "scripts/script_command_set_speed.h"
#include "scripts/script_command_wait.h"
#include "scripts/script_command_wait_until.h"
#include "scripts/script_event_lok_state.h"
#include "scripts/script_event_occupied.h"
#include "scripts/script_event_point_state.h"
#include "track/point_base.h"

namespace zemblar {
namespace {

using Kind = TemplateQuestion::Kind;
using Answers = ScriptTemplate::Answers;

/// Seconds for which a train that has come into a block drives on, to stand well inside it.
constexpr double run_in = 2;

/// Writes one script, line by line, as a person does by menus.
class Writer {
 public:
  enum class Join { with_and, with_or };

  Writer(const Glib::ustring& name, bool is_while) : name_(name), script_(new Script) {
    script_->set_while(is_while);
  }

  void if_block(Block& block, bool occupied = true, Join join = Join::with_and) {
    auto* line = new ScriptEventOccupied;
    add(*line, join);
    line->choose_occupied(occupied);
    line->choose(&block);
  }
  void if_state(PointState& state, Join join = Join::with_and) {
    auto* line = new ScriptEventPointState;
    add(*line, join);
    choose(*line, state);
  }

  /// In the block of the line before.
  void if_lok_is_here(Lok& lok) {
    auto* line = new ScriptEventLokState;
    add(*line, Join::with_and);
    choose(*line, 1, lok);
    line->choose_state(ScriptEventLokState::State::here);
  }

  void set_speed(unsigned percent, Lok* lok = nullptr) {
    auto& line = add<ScriptCommandSetSpeed>();
    if (lok) line.set_lok(lok);
    line.set_speed({percent, false});
  }
  void set_direction(Lok& lok, Direction direction) {
    auto& line = add<ScriptCommandSetDirection>();
    line.set_lok(&lok);
    line.set_direction(direction);
  }
  void set_point(PointState& state) { choose(add<ScriptCommandSetPoint>(), state); }
  void reserve(Block& block) { choose(add<ScriptCommandReserve>(), 2, block); }
  void wait(double seconds) {
    if (seconds > 0) add<ScriptCommandWait>().set_spin_value(1, seconds);
  }
  void wait_until_free(Block& block) { choose(add<ScriptCommandWaitBlock>(), 1, block); }
  void wait_until(PointState& state) { choose(add<ScriptCommandWaitPoint>(), state); }
  void save() { add<ScriptCommandSave>(); }
  void restore() { add<ScriptCommandRestore>(); }

  /// Call when all lines are written. Before that the script is in no layout, so that no run begins
  /// with half of the commands.
  Script* finish() {
    Layout::get().get_scripts().add(script_);
    script_->set_name(name_);
    script_->start();
    return script_;
  }

 private:
  template <typename Line>
  Line& add() {
    auto* line = new Line(*script_);
    script_->add_command(line);
    return *line;
  }
  void add(ScriptEvent& line, Join join) {
    line.set_or_flag(join == Join::with_or);
    script_->add_condition(&line);
  }
  static void choose(ScriptLine& line, unsigned arg, const Object& object) {
    const auto offered = line.choices(arg);
    const auto found = std::ranges::find_if(
        offered, [&](const ScriptChoice& choice) { return choice.object == &object; });
    assert(found != offered.end());
    found->choose();
  }
  static void choose(ScriptLine& line, PointState& state) {
    choose(line, 1, *state.get_owner());
    choose(line, 2, state);
  }

  Glib::ustring name_;
  Script* script_;
};

Glib::ustring titled(const char* format, const Object& object) {
  return Glib::ustring::compose(format, object.get_name());
}

Glib::ustring state_title(const PointState& state) {
  return Glib::ustring::compose("%1: %2", state.get_owner()->get_name(), state.get_name());
}

// A speed that is set or taken back under the brake is not sent. The brake may be on for a moment
// after the block ahead has read free: to its own train, the block that it holds is free when the
// brake is off.
std::vector<Script*> stop_at_signal(const Answers& answers) {
  auto& before = *answers[0].block;
  auto& stop = *answers[1].state;
  auto& go = *answers[2].state;
  auto& behind = *answers[3].block;
  Writer script(titled(_("Stop at %1"), *stop.get_owner()), false);
  script.if_block(behind, false);
  script.if_state(stop);
  script.if_block(before);
  script.wait_until_free(before);
  script.save();
  script.set_speed(0);
  script.wait_until(go);
  script.wait_until_free(behind);
  script.wait_until_free(before);
  script.restore();
  return {script.finish()};
}

std::vector<Script*> block_signal(const Answers& answers) {
  auto& behind = *answers[0].block;
  std::vector<Script*> made;
  for (const bool occupied : {true, false}) {
    auto& state = *answers[occupied ? 1 : 2].state;
    Writer script(state_title(state), false);
    script.if_block(behind, occupied);
    script.set_point(state);
    made.push_back(script.finish());
  }
  return made;
}

std::vector<Script*> shuttle(const Answers& answers) {
  auto& lok = *answers[0].lok;
  std::vector<Script*> made;
  for (const unsigned end : {1, 3}) {
    auto& block = *answers[end].block;
    auto* next = answers[end + 1].block;
    Writer script(titled(_("Shuttle Leaves %1"), block), false);
    script.if_block(block);
    script.if_lok_is_here(lok);
    script.wait(run_in);
    script.set_speed(0, &lok);
    script.wait(answers[5].number);
    if (next) script.wait_until_free(*next);
    script.set_direction(lok, end == 1 ? Direction::Forwards : Direction::Reverse);
    script.set_speed(static_cast<unsigned>(answers[6].number), &lok);
    made.push_back(script.finish());
  }
  return made;
}

// A train that finds the block ahead taken stands here under its brake. Its stop begins when that
// is off.
std::vector<Script*> station_stop(const Answers& answers) {
  auto& platform = *answers[0].block;
  auto& ahead = *answers[1].block;
  Writer script(titled(_("Station Stop in %1"), platform), false);
  script.if_block(platform);
  script.wait(run_in);
  for (auto* block : {&ahead, &platform}) script.wait_until_free(*block);
  script.save();
  script.set_speed(0);
  script.wait(answers[2].number);
  for (auto* block : {&ahead, &platform}) script.wait_until_free(*block);
  script.restore();
  return {script.finish()};
}

std::vector<Script*> route(const Answers& answers) {
  auto& go = *answers[0].state;
  auto* behind = answers[5].block;
  auto* stop = answers[6].state;
  Writer script(titled(_("Route by %1"), *go.get_owner()), false);
  script.if_state(go);
  for (unsigned point = 1; point <= 4; ++point) {
    if (answers[point].state) script.set_point(*answers[point].state);
  }
  std::vector<Script*> made{script.finish()};
  if (behind && stop) {
    Writer back(titled(_("%1 Goes Back"), *go.get_owner()), false);
    back.if_state(go);
    back.if_block(*behind);
    back.set_point(*stop);
    made.push_back(back.finish());
  }
  return made;
}

std::vector<Script*> crossing_guard(const Answers& answers) {
  Writer script(titled(_("Guard of %1"), *answers[0].block), true);
  for (unsigned approach = 1; approach < answers.size(); ++approach) {
    if (answers[approach].block) {
      script.if_block(*answers[approach].block, true, Writer::Join::with_or);
    }
  }
  script.reserve(*answers[0].block);
  return {script.finish()};
}

constexpr double longest_stop = 3600;  // seconds

bool is_given(const TemplateQuestion& question, const TemplateAnswer& answer) {
  switch (question.kind) {
    case Kind::block:
      return answer.block != nullptr;
    case Kind::point_state:
      return answer.state != nullptr;
    case Kind::lok:
      return answer.lok != nullptr;
    case Kind::number:
      return true;
  }
  return false;
}

/// The label without the mark of its access key and the colon.
Glib::ustring caption(const TemplateQuestion& question) {
  std::string text = _(question.label);
  std::erase(text, '_');
  if (text.ends_with(':')) text.pop_back();
  return text;
}

}  // namespace

const std::vector<ScriptTemplate>& script_templates() {
  static const std::vector<ScriptTemplate> all{
      {N_("Stop at a Signal"),
       N_("A train that comes to the signal at stop waits there, and goes on when the signal shows "
          "go and the block behind it is free."),
       {{N_("Block _before the signal:"), Kind::block},
        {N_("_Signal at stop:"), Kind::point_state},
        {.label = N_("Signal at _go:"), .kind = Kind::point_state, .point_of = 1, .unlike = 1},
        {.label = N_("Block be_hind the signal:"), .kind = Kind::block, .unlike = 0}},
       stop_at_signal},
      {N_("Block Signal"),
       N_("The signal shows stop while the block behind it is occupied, and go when it is free."),
       {{N_("Block be_hind the signal:"), Kind::block},
        {N_("_Signal at stop:"), Kind::point_state},
        {.label = N_("Signal at _go:"), .kind = Kind::point_state, .point_of = 1, .unlike = 1}},
       block_signal},
      {N_("Shuttle"),
       N_("A locomotive goes to and fro between two ends of a line, and stands at each for a "
          "while."),
       {{N_("_Locomotive:"), Kind::lok},
        {N_("End that it leaves _forwards:"), Kind::block},
        {.label = N_("Block next to that end:"),
         .kind = Kind::block,
         .is_optional = true,
         .unlike = 1},
        {.label = N_("End that it leaves in _reverse:"), .kind = Kind::block, .unlike = 1},
        {.label = N_("Block next to that end:"),
         .kind = Kind::block,
         .is_optional = true,
         .unlike = 3},
        {N_("Stands for (_seconds):"), Kind::number, false, 10, longest_stop},
        {N_("S_peed (%):"), Kind::number, false, 50, 100}},
       shuttle},
      {N_("Station Stop"),
       N_("Every train that comes in stops for a while, and leaves when the block ahead is free."),
       {{N_("_Platform:"), Kind::block},
        {.label = N_("Block _ahead:"), .kind = Kind::block, .unlike = 0},
        {N_("Stands for (_seconds):"), Kind::number, false, 10, longest_stop}},
       station_stop},
      {N_("Route by Entry Signal"),
       N_("One click that sets the signal to go sets all points of the way into a track."),
       {{N_("_Signal at go:"), Kind::point_state},
        {N_("_First point:"), Kind::point_state},
        {N_("Seco_nd point:"), Kind::point_state, true},
        {N_("_Third point:"), Kind::point_state, true},
        {N_("Fo_urth point:"), Kind::point_state, true},
        {N_("When a train is in _block:"), Kind::block, true},
        {.label = N_("set the signal b_ack to:"),
         .kind = Kind::point_state,
         .is_optional = true,
         .point_of = 0,
         .unlike = 0}},
       route},
      {N_("Crossing Guard"),
       N_("One train at a time is let through a crossing, in the order in which they come to it."),
       {{N_("Cr_ossing, or another block:"), Kind::block},
        {.label = N_("_First approach:"), .kind = Kind::block, .unlike = 0},
        {.label = N_("_Second approach:"), .kind = Kind::block, .is_optional = true, .unlike = 0},
        {.label = N_("_Third approach:"), .kind = Kind::block, .is_optional = true, .unlike = 0},
        {.label = N_("Fo_urth approach:"), .kind = Kind::block, .is_optional = true, .unlike = 0}},
       crossing_guard},
  };
  return all;
}

Glib::ustring what_lacks(const ScriptTemplate& offered, const Answers& answers) {
  assert(answers.size() == offered.questions.size());
  for (std::size_t i = 0; i < answers.size(); ++i) {
    const auto& question = offered.questions[i];
    if (!is_given(question, answers[i]) && !question.is_optional) {
      return Glib::ustring::compose(_("“%1” is still to be chosen."), caption(question));
    }
    if (question.unlike < 0 || !is_given(question, answers[i])) continue;
    const auto other = static_cast<std::size_t>(question.unlike);
    if (answers[i].block == answers[other].block && answers[i].state == answers[other].state) {
      return Glib::ustring::compose(_("“%1” and “%2” are the same."),
                                    caption(offered.questions[other]), caption(question));
    }
  }
  return {};
}

}  // namespace zemblar

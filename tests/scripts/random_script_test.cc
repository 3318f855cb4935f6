// Scripts under whatever a person and a railway can do to them, in any order.

#include <random>

#include "scripts/script_command_wait.h"
#include "scripts/script_text.h"
#include "tests/scripts/script_scene.h"
#include "track/point.h"
#include "track/signal.h"

namespace zemblar::test {
namespace {

class RandomScripts : public ScriptScene {
 protected:
  static constexpr unsigned block_count = 5;
  static constexpr unsigned lok_count = 3;
  static constexpr unsigned script_count = 8;

  void begin(unsigned seed) {
    random_.seed(seed);
    calm_ = false;
    layout().new_document(false);
    for (unsigned i = 0; i < block_count; ++i) add_block();
    layout().get_blocks().add(new Signal);
    layout().get_points().add(new Point);
    for (unsigned i = 0; i < lok_count; ++i) add_lok();
    for (unsigned i = 0; i < script_count; ++i) add_script();
  }

  void step() {
    happen(below(100));
    check();
  }

  /// Whatever has happened, nothing of it is left when no run is.
  void end() {
    const bool by_edit = below(2) == 0;
    calm_ = true;
    for (auto* made : scripts()) {
      for (unsigned i = 0; i < made->get_num_conditions(); ++i) made->get_condition(i)->disarm();
    }
    // What one run gives free makes another one go on, which may run a script once more.
    for (unsigned round = 0; round < 2; ++round) {
      for (auto* made : scripts()) {
        if (by_edit) {
          command(*made, "save");
        } else {
          made->destroy();
        }
      }
      clock.advance(0ms);
    }
    for (const auto* made : scripts()) EXPECT_EQ(made->num_runs(), 0u);
    EXPECT_TRUE(layout().script_overlays.empty());
    for (auto* block : blocks()) EXPECT_TRUE(block->get_reservations().empty());
    for (auto* lok : all<Lok>(layout().get_loks())) {
      lok->set_brake(false);
      lok->apply_speed_overlay();
      EXPECT_EQ(lok->get_speed_overlay(), lok->get_speed());
      for (const auto* function : all<Function>(*lok)) {
        EXPECT_EQ(function->get_state_overlay(), function->get_state());
      }
    }
  }

  std::size_t most_levels = 0;
  unsigned most_runs = 0;
  unsigned reserved = 0;  // blocks after events
  unsigned waiting = 0;   // braked locomotives beside them

 private:
  void one_of(std::initializer_list<std::function<void()>> deeds) {
    deeds.begin()[below(static_cast<unsigned>(deeds.size()))]();
  }
  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }
  template <typename T>
  static std::vector<T*> all(const Object& parent) {
    std::vector<T*> found;
    collect(parent, found);
    return found;
  }
  template <typename T>
  T* any(const std::vector<T*>& objects) {
    return objects.empty() ? nullptr : objects[below(static_cast<unsigned>(objects.size()))];
  }
  static std::vector<Script*> scripts() { return all<Script>(layout().get_scripts()); }
  static std::vector<Zone*> blocks() { return all<Zone>(layout().get_blocks()); }
  static std::vector<PointBase*> points() { return all<PointBase>(layout()); }
  static std::vector<Lok*> loks() { return all<Lok>(layout().get_loks()); }
  static std::vector<Function*> functions() { return all<Function>(layout().get_loks()); }

  // --- Building ---

  void add_block() {
    auto others = blocks();
    auto* made = layout().get_blocks().add(new Zone);
    made->set_input(layout().get_devices().add(new Detector));
    for (auto* other : others) {
      if (!other->right.is_connected()) return other->right.connect(&made->left);
    }
  }
  void add_lok() {
    auto* made = layout().get_loks().add(new Lok);
    made->set_speed(below(127));
    // Now and then somebody ends something because of what a script does.
    made->property_speed_overlay().signal_changed().connect([this] {
      if (!calm_ && below(60) == 0) end_something();
    });
    function(made, "light");
    function(made, "bell", Function::Type::Pulse);
  }
  void add_script() {
    calm_ = true;
    auto* made = script(below(3) != 0);
    for (unsigned i = 1 + below(2); i > 0; --i) add_condition(*made);
    for (unsigned i = 1 + below(6); i > 0; --i) add_command(*made);
    calm_ = false;
    made->start();
  }
  void add_condition(Script& made) {
    static const char* const keys[] = {"occupied",    "occupied",  "occupied",    "occupied",
                                       "point-state", "lok-state", "track-power", "lok-speed"};
    auto* line = create_script_event(keys[below(std::size(keys))]);
    line->set_or_flag(below(2));
    made.add_condition(line);
    alter(*line);
  }
  void add_command(Script& made) {
    static const char* const keys[] = {
        "set-speed", "set-speed",       "set-function", "set-direction", "wait",
        "wait",      "wait-init-event", "save",         "restore",       "set-function",
        "set-point", "set-point",       "wait-block",   "wait-point",    "run-script",
        "say",       "reserve",         "reserve",      "release"};
    auto* line = create_script_command(keys[below(std::size(keys))], made);
    if (auto* delay = dynamic_cast<ScriptCommandWait*>(line)) {
      delay->set_spin_value(1, below(50) / 10.0);
    } else {
      alter(*line);
      alter(*line);
    }
    made.add_command(line);
  }
  /// As by a menu, while the line is there.
  void alter(ScriptLine& line) {
    if (auto* speed = dynamic_cast<ScriptCommandSetSpeed*>(&line)) {
      speed->set_speed({below(101), below(2) == 0});
    }
    std::vector<ScriptChoice> offered;
    for (unsigned arg = 1; arg <= 4; ++arg) {
      if (line.get_arg_type(arg) != ScriptLine::ArgType::menu) continue;
      const auto more = line.choices(arg);
      offered.insert(offered.end(), more.begin(), more.end());
    }
    std::erase_if(offered, [](const auto& choice) { return choice.separator; });
    if (!offered.empty()) offered[below(static_cast<unsigned>(offered.size()))].choose();
  }

  // --- What happens ---

  void happen(unsigned kind) {
    if (kind < 35) return track();
    if (kind < 60) return clock.advance(std::chrono::milliseconds(below(1500)));
    if (kind < 75) return drive();
    if (kind < 95) return edit();
    end_something();
  }
  void track() {
    auto* block = any(blocks());
    auto* lok = any(loks());
    if (!block || !lok) return;
    one_of({
        [&] { block->replace_lok(below(2) ? lok : nullptr); },
        [&] { at(block).see(lok, below(3)); },
        [&] { at(block).lose(lok); },
        [&] { at(block).occupy(below(2)); },
        [&] { at(block).occupy(below(2)); },
        [&] { switch_point(); },
        [&] { switch_point(); },
    });
  }
  void switch_point() {
    auto* point = any(points());
    if (point) point->set_state(any(point->states()));
  }
  void drive() {
    auto* lok = any(loks());
    auto* function = any(functions());
    one_of({
        [&] { lok->set_brake(below(2)); },
        [&] { lok->set_emergency_stop(below(2)); },
        [&] { lok->set_direction(opposite(lok->get_direction())); },
        [&] { function ? function->set_state(below(2)) : void(); },
        [&] { lok->set_speed(below(127)); },
        [&] { lok->set_speed(below(127)); },
    });
  }
  void edit() {
    auto* made = any(scripts());
    if (!made) return add_script();
    const auto at_command = below(made->get_num_commands() + 1);
    const auto at_condition = below(made->get_num_conditions() + 1);
    auto* command_line = made->get_command(at_command);
    auto* condition_line = made->get_condition(at_condition);
    one_of({
        [&] { made->remove_command(at_command); },
        [&] { made->move_command(at_command, below(4)); },
        [&] { add_command(*made); },
        [&] { made->remove_condition(at_condition); },
        [&] { made->move_condition(at_condition, below(4)); },
        [&] { add_condition(*made); },
        [&] { made->set_while(below(2)); },
        [&] { condition_line ? condition_line->set_or_flag(below(2)) : void(); },
        [&] { command_line ? alter(*command_line) : void(); },
        [&] { condition_line ? alter(*condition_line) : void(); },
        [&] { command_line ? made->set_off(*command_line, below(2)) : void(); },
        [&] { condition_line ? made->set_off(*condition_line, below(2)) : void(); },
        [&] { command_line ? paste(*made, command_line, any(scripts())) : void(); },
        [&] { condition_line ? paste(*made, condition_line, any(scripts())) : void(); },
        [&] { made->start(); },
    });
  }
  static void paste(const Script& from, const ScriptLine* line, Script* to) {
    paste_lines(*to, copy_script(from, line), to->get_command(0));
  }
  void end_something() {
    auto* lok = any(loks());
    auto* block = any(blocks());
    auto* button = any(functions());
    one_of({
        [&] { end(any(scripts()), [this] { add_script(); }); },
        [&] { end(any(scripts()), [this] { add_script(); }); },
        [&] { button ? button->destroy() : void(); },
        [&] { end(any(points()), [this] { layout().get_blocks().add(new Signal); }); },
        [&] { end_state(); },
        [&] { end(block, [this] { add_block(); }); },
        [&] {
          for (auto* each : lok && !lok->is_deleting() ? blocks() : std::vector<Zone*>()) {
            at(each).lose(lok);
          }
          end(lok, [this] { add_lok(); });
        },
    });
  }
  void end_state() {
    auto* point = any(points());
    auto* state = point ? any(point->states()) : nullptr;
    if (state && point->states().size() > 2) state->destroy();
    if (point) point->add_state();
  }
  /// Another one comes in the place of the object.
  template <typename Add>
  static void end(Object* object, const Add& add) {
    if (!object || object->is_deleting()) return;
    object->destroy();
    add();
  }

  // --- What must hold ---

  void check() {
    const auto there = loks();
    const auto buttons = functions();
    for (const auto* level : layout().script_overlays) {
      for (const auto& [lok, speed] : level->speeds) EXPECT_EQ(std::ranges::count(there, lok), 1);
      for (const auto& [lok, way] : level->directions) EXPECT_EQ(std::ranges::count(there, lok), 1);
      for (const auto& [button, on] : level->states) {
        EXPECT_EQ(std::ranges::count(buttons, button), 1);
        EXPECT_NE(button->get_type(), Function::Type::Pulse);
      }
    }
    for (auto* button : buttons) {
      EXPECT_EQ(button->get_state_overlay(), ScriptOverlay::apply(button, button->get_state()));
    }
    for (auto* block : blocks()) {
      reserved += !block->get_reservations().empty() && block->get_lok();
      for (const auto* lok : there) {
        const auto* ahead = lok->front ? lok->front->get_partner() : nullptr;
        const bool must_wait =
            ahead && ahead->get_block() == block && block->is_kept_from(*lok) && block->get_lok();
        waiting += must_wait && lok->get_brake();
      }
    }
    unsigned runs = 0;
    for (const auto* made : scripts()) runs += made->num_runs();
    most_runs = std::max(most_runs, runs);
    most_levels = std::max(most_levels, layout().script_overlays.size());
  }

  std::mt19937 random_;
  bool calm_ = false;
};

TEST_F(RandomScripts, leave_no_trace_on_speeds_and_functions) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    begin(seed);
    for (int i = 0; i < 400; ++i) {
      step();
      ASSERT_FALSE(HasFailure()) << "after event " << i;
    }
    end();
    ASSERT_FALSE(HasFailure());
  }
  EXPECT_GT(most_runs, 10u) << "else nothing was tried";
  EXPECT_GT(most_levels, 10u);
  EXPECT_GT(reserved, 1000u);
  EXPECT_GT(waiting, 100u);
}

}  // namespace
}  // namespace zemblar::test

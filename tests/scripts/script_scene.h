#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "locomotives/function.h"
#include "runtime/timer.h"
#include "scripts/script.h"
#include "scripts/script_command_set_speed.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"
#include "scripts/script_ui.h"
#include "tests/support/small_railway.h"

namespace zemblar::test {

using namespace std::chrono_literals;

/// What a test wants to be done in the midst of a run.
class Act : public ScriptCommand {
 public:
  Act(Script& script, std::function<void(ScriptContext&)> act)
      : ScriptCommand(script), act_(std::move(act)) {}
  [[nodiscard]] Glib::ustring get_format() const override { return "Act"; }
  void run(ScriptContext& context) override {
    const auto act = act_;  // it may end this line
    act(context);
  }

 private:
  std::function<void(ScriptContext&)> act_;
};

/// Chooses what a person would read in the menu. False when it is not offered.
inline bool pick(ScriptLine& line, unsigned arg, const std::string& text) {
  for (const auto& choice : line.choices(arg)) {
    if (choice.text.raw() != text) continue;
    choice.choose();
    return true;
  }
  return false;
}
inline void pick_all(ScriptLine& line, const std::vector<std::string>& texts) {
  for (unsigned i = 0; i < texts.size(); ++i) {
    EXPECT_TRUE(texts[i].empty() || pick(line, i + 1, texts[i])) << texts[i];
  }
}

/// The sentence as it is read.
inline std::string sentence(const ScriptLine& line) {
  auto text = line.get_format().raw();
  for (unsigned arg = 1; arg <= 5; ++arg) {
    const auto mark = "%" + std::string(1, static_cast<char>('0' + arg));
    const auto place = text.find(mark);
    if (place != std::string::npos) text.replace(place, 2, line.get_arg_text(arg).raw());
  }
  return text;
}

/// A small railway whose scripts are written as a person does, by menus.
class ScriptScene : public SmallRailway {
 protected:
  static Script* script(bool is_while = false) {
    auto* made = new Script;
    layout().get_scripts().add(made);
    made->set_while(is_while);
    return made;
  }
  /// With a condition that is armed.
  static Script* script_on(const char* block, bool is_while = false) {
    auto* made = script(is_while);
    condition(*made, block);
    return made;
  }
  static void condition(Script& script, const char* block, bool occupied = true,
                        bool is_or = false) {
    auto* line = create_script_event("occupied");
    line->set_or_flag(is_or);
    script.add_condition(line);
    // What it starts may end it, so this comes last.
    pick_all(*line, occupied ? std::vector<std::string>{block}
                             : std::vector<std::string>{block, "Unoccupied"});
  }
  /// Adds a line and makes the choices in its menus; "" leaves an argument.
  static ScriptCommand& command(Script& script, const char* key,
                                const std::vector<std::string>& choices = {}) {
    auto* line = create_script_command(key, script);
    script.add_command(line);
    pick_all(*line, choices);
    return *line;
  }
  static void set_speed(Script& script, const char* lok, unsigned speed, bool km_h = false) {
    auto& line = command(script, "set-speed", {lok});
    dynamic_cast<ScriptCommandSetSpeed&>(line).set_speed({speed, km_h});
  }
  static void wait(Script& script, double seconds) {
    command(script, "wait").set_spin_value(1, seconds);
  }
  static void act(Script& script, std::function<void(ScriptContext&)> act) {
    script.add_command(new Act(script, std::move(act)));
  }
  static Function* function(Lok* lok, const char* name,
                            Function::Type type = Function::Type::Toggle, unsigned number = 1) {
    auto* made = new Function(lok);
    made->set_name(name);
    made->set_type(type);
    made->set_function(number);
    return lok->add(made);
  }

  VirtualClock clock;
};

}  // namespace zemblar::test

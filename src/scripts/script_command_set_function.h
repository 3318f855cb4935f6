#pragma once

#include "scripts/func_holder.h"
#include "scripts/script_command.h"

namespace zemblar {

/// "Set %1 %2 %3". In a layout file `This` and the function's name, or the function's number, or
/// null; then the state.
class ScriptCommandSetFunction : public ScriptCommand {
 public:
  explicit ScriptCommandSetFunction(Script& owner);
  ScriptCommandSetFunction(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

  [[nodiscard]] const FuncHolder& get_function() const { return function; }
  [[nodiscard]] bool get_this_lok() const { return this_lok; }
  [[nodiscard]] bool get_state() const { return state; }
  void set_lok(Lok* lok);
  void set_this_lok();
  void set_function(Function* chosen);
  /// The function with this name of the locomotive of the run.
  void set_function_name(const Glib::ustring& name);
  void set_state(bool on);

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;
  [[nodiscard]] Function* target(const ScriptContext& context) const;
  [[nodiscard]] std::vector<ScriptChoice> subject_choices();
  [[nodiscard]] std::vector<ScriptChoice> function_choices();
  [[nodiscard]] Glib::ustring function_text() const;
  void save_wanted(YAML::Emitter& out) const;
  void read_wanted(const YAML::Node& entry);

  FuncHolder function;
  Function* read_ = nullptr;  // between reading and resolving
  Lok* read_lok_ = nullptr;   // likewise
  Glib::ustring read_name_;
  bool this_lok = true;
  bool state = true;
};

}  // namespace zemblar

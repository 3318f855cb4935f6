#pragma once

#include "scripts/script_command.h"

namespace zemblar {

/// "Say “%1”": shows a text in the status line, which keeps it in its history. In a layout file the
/// text.
class ScriptCommandSay : public ScriptCommand {
 public:
  static constexpr std::size_t longest_text = 200;  ///< in characters

  explicit ScriptCommandSay(Script& owner);
  /// Cuts a longer text off.
  ScriptCommandSay(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;

  Glib::ustring text_;
};

}  // namespace zemblar

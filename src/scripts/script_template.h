#pragma once

#include <glibmm/ustring.h>

#include <vector>

namespace zemblar {

class Block;
class Lok;
class PointState;
class Script;

/// What a template asks for. The texts are before translation.
struct TemplateQuestion {
  enum class Kind {
    block,
    point_state,  ///< a point or signal, and one of its states
    lok,
    number,
  };
  const char* label;
  Kind kind;
  bool is_optional = false;
  double preset = 0;  ///< of a number
  double most = 0;    ///< of a number; the least is 0
  int point_of = -1;  ///< an earlier question, if another state of its point is asked for
  int unlike = -1;    ///< an earlier question, whose answer must be another one
};

/// The answer to one question: what its kind says, or null.
struct TemplateAnswer {
  Block* block = nullptr;
  PointState* state = nullptr;
  Lok* lok = nullptr;
  double number = 0;
};

/// Scripts for a common task, made of ordinary lines that can be read and changed afterwards.
struct ScriptTemplate {
  using Answers = std::vector<TemplateAnswer>;

  const char* name;     ///< before translation
  const char* purpose;  ///< one sentence, before translation
  std::vector<TemplateQuestion> questions;
  /// Adds scripts, awake, to the current layout. The answers are in the order of the questions; all
  /// but optional ones must be given.
  std::vector<Script*> (*make)(const Answers& answers);
};

/// In the order in which they are offered.
[[nodiscard]] const std::vector<ScriptTemplate>& script_templates();
/// Why no script can be made of these answers yet, as a text for the person; empty when it can.
[[nodiscard]] Glib::ustring what_lacks(const ScriptTemplate& offered,
                                       const ScriptTemplate::Answers& answers);

}  // namespace zemblar

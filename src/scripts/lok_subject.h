#pragma once

#include <yaml-cpp/yaml.h>

#include <vector>

#include "locomotives/lok_holder.h"
#include "scripts/script_ui.h"

namespace zemblar {

struct ScriptContext;

/// A locomotive that a line of a script names, cleared when the locomotive ends.
///
/// `signal_changing` is emitted before an ending locomotive is cleared, so that undo can keep what
/// the line named.
class LokSubject : public sigc::trackable {
 public:
  LokSubject() = default;
  LokSubject(const LokSubject&) = delete;
  LokSubject& operator=(const LokSubject&) = delete;

  [[nodiscard]] Lok* get_lok() const { return holder_.get_lok(); }
  void set_lok(Lok* lok);
  /// Reads a reference. The locomotive is set when the whole file has been read, with
  /// `signal_changed` but without `signal_changing`.
  void load(const YAML::Node& node);

  sigc::signal<void>& signal_changing() { return signal_changing_; }
  /// A locomotive that ended has been cleared, or a reference has been resolved.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  LokHolder holder_;
  Lok* read_ = nullptr;  // between reading and resolving
  sigc::signal<void> signal_changing_;
  sigc::signal<void> signal_changed_;
  ScopedConnection ending_;
  ScopedConnection ended_;
};

}  // namespace zemblar

#pragma once

#include <yaml-cpp/yaml.h>

#include <vector>

#include "locomotives/lok_holder.h"
#include "scripts/script_ui.h"

namespace zemblar {

struct ScriptContext;

/// A locomotive that a line names, which ends under it at times.
///
/// The line hears of `signal_changing` before the holder lets go of one that ends, so that what it
/// named can be kept.
class LokSubject : public sigc::trackable {
 public:
  LokSubject() = default;
  LokSubject(const LokSubject&) = delete;
  LokSubject& operator=(const LokSubject&) = delete;

  [[nodiscard]] Lok* get_lok() const { return holder_.get_lok(); }
  void set_lok(Lok* lok);
  /// Reads a reference, which is there when the whole file has been read; nobody is told of that.
  void load(const YAML::Node& node);

  sigc::signal<void>& signal_changing() { return signal_changing_; }
  /// It has let go of one that has ended.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  LokHolder holder_;
  Lok* read_ = nullptr;  // until it is resolved
  sigc::signal<void> signal_changing_;
  sigc::signal<void> signal_changed_;
  ScopedConnection ending_;
  ScopedConnection ended_;
};

}  // namespace zemblar

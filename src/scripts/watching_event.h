#pragma once

#include <vector>

#include "runtime/scoped_connection.h"
#include "scripts/script_event.h"

namespace zemblar {

/// A condition that watches something, from the moment that its subject is chosen.
///
/// Scripts change what such a condition is about.
class WatchingEvent : public ScriptEvent {
 public:
  [[nodiscard]] bool is_armed() const override;
  [[nodiscard]] bool sleeps() const override;
  [[nodiscard]] bool is_awake() const override { return awake_; }
  void arm() override;
  void disarm() override;
  [[nodiscard]] Glib::ustring asleep_because() const override;

 protected:
  using Watches = std::vector<ScopedConnection>;

  /// Connects everything on which the condition depends to `trigger`. Nothing without a subject.
  [[nodiscard]] virtual Watches watch() = 0;
  /// True if `watch` would have something to watch.
  [[nodiscard]] virtual bool has_subject() const = 0;
  /// Why it can never hold, when it has no subject.
  [[nodiscard]] virtual Glib::ustring no_subject_words() const = 0;

  /// Call when the user has chosen the subject: watches it, and evaluates the script.
  void watch_chosen();
  /// Call when the subject has ended or is another one without a choice of the user.
  void follow_subject();
  /// An argument has changed: announces all, and evaluates the script.
  void announce();

 private:
  Watches watches_;
  bool awake_ = false;
};

}  // namespace zemblar

#pragma once

#include <memory>

#include "core/instance.h"
#include "core/recovery_copy.h"
#include "locomotives/train_guard.h"
#include "runtime/timer.h"
#include "ui/windows/tray.h"

namespace zemblar {

/// What the command line asks for.
struct StartOptions {
  bool track_view = false;
  bool track_editor = false;
  /// Whether work that is in no file is kept.
  bool keep_unsaved = true;
  /// Whether a guard stops the trains when the program ends without taking leave.
  bool guarded = true;
};

/// What comes before everything else in a process, the toolkit included: the user's language, and
/// the floating-point flags that fibers want equal.
void set_up_process();

/// Everything between the toolkit's start and its main loop: shared items, splash, document,
/// hardware, tray and the first windows. Made once, on the toolkit's thread; its end leaves
/// windows, devices and documents as they are.
class Application {
 public:
  explicit Application(StartOptions options);

  /// Does what a later start of the program asks for.
  void serve(const Instance::Wish& wish) const;
  /// Runs until Quit. Closing every window does not end it. The trains are stopped then, unless the
  /// person wants them to go on, and what is in no file is kept.
  void run();

 private:
  static void stop_trains();

  std::unique_ptr<TrainGuard> guard_;
  std::unique_ptr<RecoveryCopy> recovery_copy_;
  std::unique_ptr<Tray> tray_;
  Timeout first_windows_;  // armed until they open
};

}  // namespace zemblar

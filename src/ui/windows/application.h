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
  /// Whether recovery copies of unsaved work are kept.
  bool keep_unsaved = true;
  /// Whether a guard process stops the trains when the program crashes.
  bool guarded = true;
};

/// Call first in the process, before the toolkit starts: sets the user's language, and the
/// floating-point flags that all fibers should share.
void set_up_process();

/// Sets up everything between the toolkit's start and its main loop: shared items, splash,
/// document, hardware, tray and the first windows. Make one, on the toolkit's thread. Its
/// destructor leaves windows, devices and documents as they are.
class Application {
 public:
  explicit Application(StartOptions options);

  /// Carries out the wish of a later start of the program.
  void serve(const Instance::Wish& wish) const;
  /// Runs until Quit; closing all windows does not end it. Then stops the trains, unless the option
  /// "trains go on" is set, and writes the recovery copy.
  void run();

 private:
  static void stop_trains();

  std::unique_ptr<TrainGuard> guard_;
  std::unique_ptr<RecoveryCopy> recovery_copy_;
  std::unique_ptr<Tray> tray_;
  Timeout first_windows_;  // armed until the first windows open
};

}  // namespace zemblar

#pragma once

#include <list>
#include <map>

#include "core/direction.h"

namespace zemblar {

class Function;
class Lok;

/// One level of temporary changes that a script has made to speeds, directions and functions.
///
/// Making one puts it at the end of the current layout's list `script_overlays`, ending it takes it
/// out. A locomotive or function that ends leaves no entry behind.
class ScriptOverlay {
 public:
  ScriptOverlay();
  ~ScriptOverlay();
  ScriptOverlay(const ScriptOverlay&) = delete;
  ScriptOverlay& operator=(const ScriptOverlay&) = delete;

  /// Takes it out of the list, and has each object that it names take the value that is in force
  /// then: speeds, directions, states.
  void take_back();

  std::map<Lok*, unsigned> speeds;  ///< 0 to 126
  std::map<Lok*, Direction> directions;
  std::map<Function*, bool> states;

  /// The values in force for an object: the last level that names it wins; an emergency stop
  /// passes through.
  static unsigned apply(Lok* lok, unsigned speed);
  static Direction apply(Lok* lok, Direction direction);
  static bool apply(Function* function, bool state);

  /// Takes an object that ends out of every level.
  static void forget(Lok* lok);
  static void forget(Function* function);

 private:
  void withdraw();

  bool in_force_ = true;  // the list may be gone when it is not
  std::list<ScriptOverlay*>& overlays_;
  std::list<ScriptOverlay*>::iterator position_;
};

}  // namespace zemblar

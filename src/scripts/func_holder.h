#pragma once

#include <glibmm/ustring.h>
#include <sigc++/signal.h>
#include <sigc++/trackable.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

class Function;
class Lok;

/// The function that a line of a script names: either a chosen function with its locomotive, or
/// only a name, which is looked up in the locomotive of each run.
///
/// Clears a locomotive or a function that ends. The name stays when a function ends, so that
/// another one of the same name can replace it.
class FuncHolder : public sigc::trackable {
 public:
  FuncHolder() = default;
  FuncHolder(const FuncHolder&) = delete;
  FuncHolder& operator=(const FuncHolder&) = delete;

  [[nodiscard]] Lok* get_lok() const { return lok_; }
  /// Sets the locomotive, and its function with the present name if it has one.
  void set_lok(Lok* lok);
  [[nodiscard]] Function* get_function() const { return function_; }
  /// Sets the function and its locomotive.
  void set_function(Function* function);
  /// Sets a locomotive and the name of a function that it does not have yet.
  void want(Lok* lok, const Glib::ustring& name);
  /// The present name of the function; without a function, the name that was set.
  [[nodiscard]] Glib::ustring get_name() const;
  /// Sets only the name; clears locomotive and function.
  void set_name(const Glib::ustring& name);

  /// The function of the locomotive that has the present name, or null.
  [[nodiscard]] Function* find_in(const Lok& lok) const;

  /// The locomotive or the function is ending, and is about to be cleared.
  sigc::signal<void>& signal_changing() { return signal_changing_; }
  /// The locomotive or the function has been cleared.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  void hold(Lok* lok, Function* function);
  void let_go(Lok* lok);

  Lok* lok_ = nullptr;
  Function* function_ = nullptr;
  Glib::ustring name_;
  sigc::signal<void> signal_changing_;
  sigc::signal<void> signal_changed_;
  ScopedConnection lok_deleted_;
  ScopedConnection function_deleted_;
};

}  // namespace zemblar

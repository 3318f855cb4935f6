#pragma once

#include <glibmm/ustring.h>
#include <sigc++/signal.h>
#include <sigc++/trackable.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

class Function;
class Lok;

/// A function of a locomotive, which a line names: one that is chosen, with its locomotive, or a
/// name, which is looked up in whatever locomotive a run is for.
///
/// Lets go of what ends. The name stays when a function ends, so that one of the same name can take
/// its place.
class FuncHolder : public sigc::trackable {
 public:
  FuncHolder() = default;
  FuncHolder(const FuncHolder&) = delete;
  FuncHolder& operator=(const FuncHolder&) = delete;

  [[nodiscard]] Lok* get_lok() const { return lok_; }
  /// Takes its function of the present name, if there is one.
  void set_lok(Lok* lok);
  [[nodiscard]] Function* get_function() const { return function_; }
  /// And its locomotive.
  void set_function(Function* function);
  /// A function of that name, which the locomotive has not got yet.
  void want(Lok* lok, const Glib::ustring& name);
  /// The function's name now, else the one that was set.
  [[nodiscard]] Glib::ustring get_name() const;
  /// Lets go of locomotive and function.
  void set_name(const Glib::ustring& name);

  /// The function of that name in a locomotive; null for none.
  [[nodiscard]] Function* find_in(const Lok& lok) const;

  /// Something that it holds is about to end; it still holds it.
  sigc::signal<void>& signal_changing() { return signal_changing_; }
  /// It has let go of that.
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

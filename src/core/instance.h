#pragma once

#include <giomm/application.h>

#include <functional>
#include <string>
#include <vector>

namespace zemblar {

/// Keeps the program to one process per user session: it owns a name on the session bus, by which a
/// second start finds the first.
///
///     Instance instance(Instance::Kind::program);
///     if (instance.pass_on(wish)) return;
///     instance.serve([](const Instance::Wish& wish) { ... });
///
/// Without a bus each process acts as the only one. When the bus ends, the program continues.
class Instance {
 public:
  /// What a start of the program asks for; if nothing is set, any window will do.
  struct Wish {
    bool track_view = false;
    bool track_editor = false;
    std::string file{};  ///< absolute path of a layout to open, or empty
  };

  enum class Kind {
    program,  ///< takes the name when it is free
    opener    ///< only talks to the program that owns the name
  };

  /// Throws Glib::Error when the program that owns the name does not answer.
  explicit Instance(Kind kind);

  /// Sends the wish to the running program. True if there is one; this process may end then.
  [[nodiscard]] bool pass_on(const Wish& wish) const;
  /// Calls `serve` from the main loop for each wish of a later start.
  void serve(std::function<void(const Wish&)> serve);

 private:
  void receive(const Wish& wish);
  void add_action(const char* name, bool Wish::*window);

  Glib::RefPtr<Gio::Application> name_;
  std::function<void(const Wish&)> serve_;
  std::vector<Wish> waiting_;  // received before `serve` was set
};

}  // namespace zemblar

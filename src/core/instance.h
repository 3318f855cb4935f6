#pragma once

#include <giomm/application.h>

#include <functional>
#include <string>
#include <vector>

namespace zemblar {

/// One program for each session of a user: the name on the session's bus by which a second start
/// finds the first.
///
///     Instance instance(Instance::Kind::program);
///     if (instance.pass_on(wish)) return;
///     instance.serve([](const Instance::Wish& wish) { ... });
///
/// Without a bus every program is the only one that it knows of. The bus may end: the program does
/// not end with it.
class Instance {
 public:
  /// What a start asks for; nothing of it means any window.
  struct Wish {
    bool track_view = false;
    bool track_editor = false;
    std::string file{};  ///< absolute path of a layout to open, or empty
  };

  enum class Kind {
    program,  ///< takes the name when nobody has it
    opener    ///< only talks to the program that has it
  };

  /// Throws Glib::Error when the program that has the name does not answer.
  explicit Instance(Kind kind);

  /// True when a program runs, which has been told the wish; this process may end then.
  [[nodiscard]] bool pass_on(const Wish& wish) const;
  /// `serve` is called from the main loop for each later wish.
  void serve(std::function<void(const Wish&)> serve);

 private:
  void receive(const Wish& wish);
  void add_action(const char* name, bool Wish::*window);

  Glib::RefPtr<Gio::Application> name_;
  std::function<void(const Wish&)> serve_;
  std::vector<Wish> waiting_;  // until somebody serves
};

}  // namespace zemblar

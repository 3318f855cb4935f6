#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "core/address.h"
#include "edit/edit_list.h"
#include "locomotives/moving_trains.h"
#include "runtime/scoped_connection.h"
#include "simulator/trains/track_sensors.h"

namespace zemblar {
class Device;
}  // namespace zemblar

namespace zemblar::simulator {

/// A simulated user who edits at random while trains run: adds, deletes, moves, renames and changes
/// objects, and undoes much of it.
///
/// As in the program's windows, each action is one undo step, and a device is deleted only when the
/// trains stand.
class EveningEditor {
 public:
  explicit EveningEditor(Chance& chance);
  EveningEditor(const EveningEditor&) = delete;
  EveningEditor& operator=(const EveningEditor&) = delete;

  /// Does one action in the current layout, and returns its name.
  std::string_view act();

 private:
  struct Deed {
    const char* name;
    unsigned weight;
    void (EveningEditor::*act)();
  };
  static const std::vector<Deed>& deeds();

  /// Records all changes made by `work` as one step.
  void record(const std::function<void()>& work);

  template <typename T>
  T* some();
  [[nodiscard]] unsigned below(std::size_t count);
  [[nodiscard]] Glib::ustring some_name();
  [[nodiscard]] Address some_address();

  void undo();
  void redo();
  void add();
  void add_part();
  void draw();
  void rename();
  void move();
  void remove();
  void remove_device(Device& device);
  void change_block();
  void change_lok();
  void change_decoder();
  void change_function();
  void change_point();
  void change_output();
  void change_script();
  void change_device();
  void change_view();
  void change_drawing();
  void join();

  Chance& chance_;
  EditList steps_;
  StandStill standing_;
  ScopedConnection forgotten_;
};

}  // namespace zemblar::simulator

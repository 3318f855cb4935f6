#pragma once

#include <gtkmm/box.h>

#include <functional>
#include <memory>
#include <vector>

#include "runtime/scoped_connection.h"
#include "ui/status/status_mark.h"
#include "ui/toolkit/layout_follower.h"
#include "ui/toolkit/object_ref.h"

namespace Gtk {
class Menu;
}

namespace zemblar {

class Device;
class Lok;

/// The right end of the status line: marks for what the operator must see at a glance, and the
/// button "Stop All".
///
/// The marks show: the track power; the link state of each device that has a link; how many trains
/// block control holds, and how many move with an unknown place; the file, and whether there is
/// unsaved work. A click shows the object: a device or the layout in a track editor, a train in a
/// throttle.
///
/// The marks are updated at each pulse of the layout, and at once when the status line changes.
class StatusMarks : public Gtk::HBox {
 public:
  StatusMarks();

  [[nodiscard]] StatusMark& power() { return power_; }
  [[nodiscard]] StatusMark& held() { return held_; }
  [[nodiscard]] StatusMark& unplaced() { return unplaced_; }
  [[nodiscard]] StatusMark& file() { return file_; }
  [[nodiscard]] StatusMark& stop() { return stop_; }
  /// The marks of devices, in the order of the document.
  [[nodiscard]] std::vector<StatusMark*> devices() const;

 private:
  struct DeviceMark {
    explicit DeviceMark(Device& device);

    ObjectRef<Device> device;
    StatusMark mark;
  };

  void add_mark(StatusMark& mark);
  void attach(Layout& layout, LayoutFollower::Connections& connections);
  void refresh_later();
  void refresh();
  void refresh_devices();
  void make_device_marks(const std::vector<Device*>& devices);
  /// Calls `action` with the only object, or lets the user choose one of several.
  template <typename T>
  void choose(StatusMark& mark, const std::vector<T*>& objects, void (*action)(T& object));

  StatusMark power_;
  Gtk::HBox device_row_;
  std::vector<std::unique_ptr<DeviceMark>> devices_;
  StatusMark held_;
  StatusMark unplaced_;
  StatusMark file_;
  StatusMark stop_;
  std::unique_ptr<Gtk::Menu> menu_;
  ScopedConnection drop_menu_;
  ScopedConnection refresh_later_;
  ScopedConnection unsaved_changed_;
  std::unique_ptr<LayoutFollower> follower_;
};

}  // namespace zemblar

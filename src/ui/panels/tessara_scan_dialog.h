#pragma once

#include <gtkmm/dialog.h>
#include <gtkmm/label.h>
#include <gtkmm/progressbar.h>

#include "devices/tessara/device_tessara_bus.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

/// Shows the progress of a scan of a bus, and the devices found.
///
/// There is at most one per bus. It is not modal. Closing it ends the scan; it closes by itself
/// when the bus ends.
class TessaraScanDialog : public Gtk::Dialog {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  /// Starts a scan unless one is running, and shows its dialog over `parent`. The dialog deletes
  /// itself.
  static void run(DeviceTessaraBus& bus, Gtk::Window* parent);

  ~TessaraScanDialog() override;

 protected:
  void on_response(int response) override;

 private:
  explicit TessaraScanDialog(DeviceTessaraBus& bus);

  void build();
  void begin();
  void close();
  void follow_progress();
  void follow_scan();
  void note_found(Object* device);
  void show_found();

  bool closed_ = false;  // it is about to be deleted
  ObjectRef<DeviceTessaraBus> bus_;
  std::vector<Glib::ustring> found_;
  Gtk::Label state_;
  Gtk::Label result_;
  Gtk::ProgressBar bar_;
  Gtk::Button* button_ = nullptr;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/dialog.h>
#include <gtkmm/label.h>
#include <gtkmm/progressbar.h>

#include "devices/tessara/device_tessara_bus.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

/// Shows how far a scan of a bus has come and what it has found.
///
/// One for each bus, beside the other windows, which stay usable. Closing it ends the scan; it
/// closes by itself when the bus ends.
class TessaraScanDialog : public Gtk::Dialog {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  /// Begins a scan unless one is running, and shows its dialog over the window. It deletes itself.
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

  bool closed_ = false;  // its end is on the way
  ObjectRef<DeviceTessaraBus> bus_;
  std::vector<Glib::ustring> found_;
  Gtk::Label state_;
  Gtk::Label result_;
  Gtk::ProgressBar bar_;
  Gtk::Button* button_ = nullptr;
};

}  // namespace zemblar

#pragma once

#include <gtkmm/box.h>
#include <gtkmm/checkbutton.h>

#include <array>
#include <cstdint>

#include "ui/toolkit/addr_spin.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/name_entry.h"
#include "ui/toolkit/object_button.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

class DeviceDummyRailComReader;

/// Eight check buttons in a row, one for each position of a pattern; bit 0 comes first.
class PatternRow {
 public:
  /// For screen readers each button is called `name` and the number of its position, from 1.
  explicit PatternRow(const Glib::ustring& name);

  [[nodiscard]] std::uint8_t get_pattern() const;
  void show_pattern(std::uint8_t pattern);
  /// Called when the user or `show_pattern` has set or cleared a position.
  void connect_toggled(const sigc::slot<void>& slot);
  /// Adds the row to a form.
  void add_to(Form& form, const Glib::ustring& label, const Glib::ustring& tooltip);

 private:
  std::array<Gtk::CheckButton, 8> positions_;
  Gtk::HBox others_;  // all but the first, to which the label's access key goes
};

/// The panel of a simulated RailCom reader.
class DeviceDummyRailComReaderProperties : public Form {
 public:
  DeviceDummyRailComReaderProperties(DeviceDummyRailComReader& reader, const Labels& labels);

 private:
  void add_rows();
  void connect();
  void follow();

  bool updating_ = false;
  ObjectRef<DeviceDummyRailComReader> reader_;
  NameEntry name_;
  ObjectButton device_;
  AddrSpin address_{Address::Kind::mobile};
  Gtk::CheckButton long_;
  PatternRow occupied_;
  PatternRow railcom_;
};

}  // namespace zemblar

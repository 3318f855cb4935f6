#pragma once

#include <gtkmm/label.h>

#include <array>

#include "ui/toolkit/form.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

class Block;
class BlockLink;
class Lok;

/// Rows of a panel that show where a locomotive is, and the blocks ahead of it and behind it.
class LokPlace : public sigc::trackable {
 public:
  explicit LokPlace(Lok& lok);
  void add_to(Form& form);

 private:
  void follow();

  ObjectRef<Lok> lok_;
  Gtk::Label blocks_;
  Gtk::Label ahead_;
  Gtk::Label behind_;
  std::array<ScopedConnection, 4> changes_;
};

}  // namespace zemblar

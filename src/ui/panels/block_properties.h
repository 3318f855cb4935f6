#pragma once

#include <gtkmm/checkbutton.h>

#include "ui/toolkit/form.h"
#include "ui/toolkit/name_entry.h"
#include "ui/toolkit/object_button.h"

namespace zemblar {

class Block;
class Crossing;
class Zone;

/// The rows of a block's panel for its detector and for the locomotive that holds it.
///
/// With the second row the operator can free a block that a locomotive has left without being
/// detected.
class BlockRows {
 public:
  explicit BlockRows(Block& block);
  void add_to(Form& form);

 private:
  void follow();

  ObjectRef<Block> block_;
  bool updating_ = false;
  ObjectButton detector_;
  ObjectButton lok_;
  ScopedConnection input_changed_;
  ScopedConnection lok_changed_;
};

/// The panel of a zone.
class ZoneProperties : public Form {
 public:
  ZoneProperties(Zone& zone, const Labels& labels);

 private:
  NameEntry name_;
  BlockRows rows_;
  Gtk::CheckButton swap_;
};

/// The panel of a crossing.
class CrossingProperties : public Form {
 public:
  CrossingProperties(Crossing& crossing, const Labels& labels);

 private:
  NameEntry name_;
  BlockRows rows_;
};

}  // namespace zemblar

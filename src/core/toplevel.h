#pragma once

#include "core/document_class.h"
#include "core/object.h"

namespace zemblar {

/// A fixed container directly under the Layout. It cannot be deleted.
class Toplevel : public Object {
 public:
  [[nodiscard]] Section section() const { return section_; }
  [[nodiscard]] bool get_deletable() const override { return false; }
  /// True if the class of `child` is registered for this container by `ToplevelAccepts`. "Points &
  /// Signals" accepts points only. "Blocks" accepts points as well, but opening the saved file puts
  /// them back under "Points & Signals".
  [[nodiscard]] bool can_contain(Object* child) const override;

 protected:
  /// `display_name` is translated here.
  Toplevel(Section section, const char* display_name);

 private:
  Section section_;
};

class ViewToplevel : public Toplevel {
 public:
  ViewToplevel();
};

class LokToplevel : public Toplevel {
 public:
  LokToplevel();
};

class PointToplevel : public Toplevel {
 public:
  PointToplevel();
};

class BlockToplevel : public Toplevel {
 public:
  BlockToplevel();
};

class DeviceToplevel : public Toplevel {
 public:
  DeviceToplevel();
};

class ScriptToplevel : public Toplevel {
 public:
  ScriptToplevel();
};

}  // namespace zemblar

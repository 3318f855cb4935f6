#pragma once

#include "core/object_holder.h"
#include "locomotives/lok.h"

namespace zemblar {

/// An observable pointer to a locomotive; see ObjectHolder.
class LokHolder : public ObjectHolder<Lok> {
 public:
  LokHolder() : Glib::ObjectBase("LokHolder"), ObjectHolder("lok", "no-loks") {}

  [[nodiscard]] Lok* get_lok() const { return get_held(); }
  void set_lok(Lok* lok) { hold(lok); }
  [[nodiscard]] bool get_no_loks() const { return get_none(); }

  Glib::PropertyProxy<Lok*> property_lok() { return {this, "lok"}; }
  Glib::PropertyProxy_ReadOnly<bool> property_no_loks() { return {this, "no-loks"}; }
};

/// Number of locomotives in the current layout, at any depth.
[[nodiscard]] inline unsigned lok_count() {
  return ObjectCount<Lok>::get().count();
}

}  // namespace zemblar

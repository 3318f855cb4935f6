#pragma once

#include <glibmm/object.h>
#include <glibmm/propertyproxy.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

class Lok;

/// An observable pointer to a locomotive, which clears itself when that ends. It also tells whether
/// there is any locomotive to choose, at any depth of groups, in whichever layout is current.
class LokHolder : public Glib::Object {
 public:
  LokHolder();

  [[nodiscard]] Lok* get_lok() const { return lok_; }
  void set_lok(Lok* lok);
  [[nodiscard]] bool get_no_loks() const;

  Glib::PropertyProxy<Lok*> property_lok() { return {this, "lok"}; }
  Glib::PropertyProxy_ReadOnly<bool> property_no_loks() { return {this, "no-loks"}; }

 private:
  Lok* lok_ = nullptr;
  ScopedConnection lok_deleted_;
  ScopedConnection no_loks_changed_;
};

/// How many locomotives the current layout holds, at any depth.
[[nodiscard]] unsigned lok_count();

}  // namespace zemblar

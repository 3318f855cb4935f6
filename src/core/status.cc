#include "core/status.h"

namespace zemblar {
namespace {

Glib::ustring& text() {
  static Glib::ustring line;
  return line;
}

}  // namespace

sigc::signal<void>& signal_status_changed() {
  static sigc::signal<void> signal;
  return signal;
}

void set_status(const Glib::ustring& message) {
  text() = message;
  signal_status_changed().emit();
}

void clear_status() {
  set_status({});
}

Glib::ustring get_status() {
  return text();
}

}  // namespace zemblar

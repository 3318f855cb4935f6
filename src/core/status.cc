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

void StatusNote::tell(const Glib::ustring& message) {
  if (told_.raw() == message.raw()) return;
  told_ = message;
  set_status(message);
}

void StatusNote::take_back() {
  if (!told_.empty() && get_status().raw() == told_.raw()) clear_status();
  told_.clear();
}

}  // namespace zemblar

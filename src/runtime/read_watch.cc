#include "runtime/read_watch.h"

#include <glibmm/main.h>

#include <cassert>
#include <utility>

#include "runtime/fiber.h"

namespace zemblar {

struct ReadWatch::Source {
  GSource base;
  ReadWatch* watch;
};

ReadWatch::ReadWatch(int descriptor) : descriptor_(descriptor) {
  static GSourceFuncs functions = {prepare, check, dispatch, nullptr, nullptr, nullptr};
  source_ = g_source_new(&functions, sizeof(Source));
  reinterpret_cast<Source*>(source_)->watch = this;
  // A reader may run a modal dialog, during which other reads must continue.
  g_source_set_can_recurse(source_, TRUE);
  g_source_attach(source_, nullptr);
}

ReadWatch::~ReadWatch() {
  assert(!reader_);
  g_source_destroy(source_);
  g_source_unref(source_);
}

gboolean ReadWatch::prepare(GSource*, gint* timeout) {
  *timeout = -1;
  return FALSE;
}

gboolean ReadWatch::check(GSource* source) {
  auto* watch = reinterpret_cast<Source*>(source)->watch;
  return watch->polled_ && g_source_query_unix_fd(source, watch->polled_) != 0;
}

// Stops polling while no fiber waits, since unread bytes would wake the loop again and again.
gboolean ReadWatch::dispatch(GSource* source, GSourceFunc, gpointer) {
  auto* watch = reinterpret_cast<Source*>(source)->watch;
  watch->reader_ ? watch->wake() : watch->poll(false);
  return G_SOURCE_CONTINUE;
}

void ReadWatch::poll(bool on) {
  if (on == (polled_ != nullptr)) return;
  if (on) {
    polled_ = g_source_add_unix_fd(source_, descriptor_,
                                   static_cast<GIOCondition>(G_IO_IN | G_IO_ERR | G_IO_HUP));
  } else {
    g_source_remove_unix_fd(source_, std::exchange(polled_, nullptr));
  }
}

void ReadWatch::wait(const Glib::RefPtr<Gio::Cancellable>& cancel) {
  assert(!reader_);
  follow(cancel);
  fiber::yield([&](fiber* f) {
    reader_ = f;
    if (descriptor_ < 0 || (cancel && cancel->is_cancelled())) return wake_soon();
    poll(true);
  });
}

void ReadWatch::follow(const Glib::RefPtr<Gio::Cancellable>& cancel) {
  if (cancel == cancel_) return;
  on_cancel_.disconnect();
  cancel_ = cancel;
  if (cancel) on_cancel_ = cancel->signal_cancelled().connect([this] { wake_soon(); });
}

void ReadWatch::end() {
  poll(false);
  descriptor_ = -1;
  wake_soon();
}

void ReadWatch::wake_soon() {
  if (!reader_ || waking_.connected()) return;
  waking_ = Glib::signal_idle().connect([this] { return wake(), false; }, Glib::PRIORITY_DEFAULT);
}

// Must be the last statement: the reader may destroy the watch.
void ReadWatch::wake() {
  waking_.disconnect();
  if (auto* reader = std::exchange(reader_, nullptr)) fiber::resume(reader, 0);
}

}  // namespace zemblar

#include "locomotives/lok_holder.h"

#include "core/layout.h"
#include "core/property.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

/// Counts the locomotives of the current layout, for all holders: a walk through the groups for
/// each of them would be made at every change of any object.
class LokCounter : public sigc::trackable {
 public:
  static LokCounter& get() {
    static auto* counter = new LokCounter;
    return *counter;
  }

  [[nodiscard]] unsigned count() const { return count_; }
  /// The first one has come or the last one gone.
  sigc::signal<void>& signal_any_changed() { return signal_any_changed_; }

 private:
  LokCounter() {
    Layout::signal_replaced().connect([this] { follow(); });
    follow();
  }

  void follow() {
    auto& layout = Layout::get();
    added_ = ScopedConnection(layout.signal_object_added().connect([this](Object* object) {
      if (dynamic_cast<Lok*>(object)) set(count_ + 1);
    }));
    removed_ = ScopedConnection(layout.signal_object_removed().connect([this](Object* object) {
      if (dynamic_cast<Lok*>(object) && belongs(*object)) set(count_ - 1);
    }));
    unsigned count = 0;
    for_each_lok(layout, [&](Lok&) { ++count; });
    set(count);
  }

  static bool belongs(const Object& object) {
    const auto above = object.get_ancestors();
    return !above.empty() && above.back() == &Layout::get();
  }

  void set(unsigned count) {
    const bool any_changed = (count == 0) != (count_ == 0);
    count_ = count;
    if (any_changed) signal_any_changed_.emit();
  }

  unsigned count_ = 0;
  sigc::signal<void> signal_any_changed_;
  ScopedConnection added_;
  ScopedConnection removed_;
};

}  // namespace

unsigned lok_count() {
  return LokCounter::get().count();
}

LokHolder::LokHolder() : Glib::ObjectBase("LokHolder") {
  register_property<Lok*>(this, "lok", &LokHolder::get_lok, &LokHolder::set_lok);
  register_property<bool>(this, "no-loks", &LokHolder::get_no_loks);
  no_loks_changed_ = ScopedConnection(LokCounter::get().signal_any_changed().connect(
      [this] { notify_property(*this, "no-loks"); }));
}

void LokHolder::set_lok(Lok* lok) {
  if (lok == lok_) return;
  lok_ = lok;
  lok_deleted_.disconnect();
  if (lok) {
    lok_deleted_ = ScopedConnection(lok->signal_deleted().connect([this] { set_lok(nullptr); }));
  }
  notify_property(*this, "lok");
}

bool LokHolder::get_no_loks() const {
  return lok_count() == 0;
}

}  // namespace zemblar

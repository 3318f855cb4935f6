#include "locomotives/lok_holder.h"

#include <unordered_set>

#include "core/layout.h"
#include "core/property.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

/// Counts the locomotives of the current layout as they come and go. A set, because the removal of
/// objects that were never in the layout is announced as well.
class LokCensus {
 public:
  static LokCensus& get() {
    static auto* census = new LokCensus;
    return *census;
  }

  unsigned count() {
    if (!layout_) follow_current();
    return static_cast<unsigned>(loks_.size());
  }

  /// From none to some, or back.
  sigc::signal<void> signal_none_changed;

 private:
  LokCensus() {
    Layout::signal_replaced().connect([this] {
      const bool none = loks_.empty();
      follow_current();
      if (none != loks_.empty()) signal_none_changed.emit();
    });
  }

  void follow_current() {
    layout_ = &Layout::get();
    loks_.clear();
    for_each_lok(*layout_, [this](Lok& lok) { loks_.insert(&lok); });
    added_ = layout_->signal_object_added().connect([this](Object* object) {
      if (!dynamic_cast<Lok*>(object) || !loks_.insert(object).second) return;
      if (loks_.size() == 1) signal_none_changed.emit();
    });
    removed_ = layout_->signal_object_removed().connect([this](Object* object) {
      if (loks_.erase(object) && loks_.empty()) signal_none_changed.emit();
    });
    deleted_ = layout_->signal_deleted().connect([this] { layout_ = nullptr; });
  }

  Layout* layout_ = nullptr;  // null until it is asked, and when the layout has ended
  std::unordered_set<Object*> loks_;
  ScopedConnection added_;
  ScopedConnection removed_;
  ScopedConnection deleted_;
};

}  // namespace

unsigned lok_count() {
  return LokCensus::get().count();
}

LokHolder::LokHolder() : Glib::ObjectBase("LokHolder") {
  register_property<Lok*>(this, "lok", &LokHolder::get_lok, &LokHolder::set_lok);
  register_property<bool>(this, "no-loks", &LokHolder::get_no_loks);
  static_cast<void>(lok_count());  // from now on it follows the layout
  no_loks_changed_ =
      LokCensus::get().signal_none_changed.connect([this] { notify_property(*this, "no-loks"); });
}

bool LokHolder::get_no_loks() const {
  return lok_count() == 0;
}

void LokHolder::set_lok(Lok* lok) {
  if (lok == lok_) return;
  lok_ = lok;
  lok_deleted_.disconnect();
  if (lok) lok_deleted_ = lok->signal_deleted().connect([this] { set_lok(nullptr); });
  notify_property(*this, "lok");
}

}  // namespace zemblar

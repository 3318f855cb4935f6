#include "scripts/point_subject.h"

#include "core/i18n.h"
#include "core/layout.h"
#include "scripts/script_entry.h"

namespace zemblar {

PointSubject::PointSubject() {
  point_.signal_changing().connect(signal_changing_.make_slot());
  state_.signal_changing().connect(signal_changing_.make_slot());
  point_.signal_changed().connect(signal_changed_.make_slot());
  state_.signal_changed().connect(signal_changed_.make_slot());
}

void PointSubject::set_point(PointBase* point) {
  point_.set(point);
  state_.set(point ? point->get_state() : nullptr);
}

bool PointSubject::holds() const {
  const auto* point = get_point();
  return point && get_state() && !point->is_deleting() && point->get_state() == get_state();
}

Glib::ustring PointSubject::point_text() const {
  return get_point() ? get_point()->get_name() : _("(No Point or Signal Selected)");
}

Glib::ustring PointSubject::state_text() const {
  return get_state() ? get_state()->get_name() : _("(No State Selected)");
}

void PointSubject::save(YAML::Emitter& out) const {
  out << static_cast<const Object*>(get_point()) << static_cast<const Object*>(get_state());
}

void PointSubject::load(const YAML::Node& entry, unsigned place) {
  point_.read(element(entry, place));
  state_.read(element(entry, place + 1));
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        point_.take_read();
        state_.take_read();
        if (get_state() && get_state()->get_owner() != get_point()) state_.set(nullptr);
        signal_changed_.emit();
        return true;
      },
      *this));
}

}  // namespace zemblar

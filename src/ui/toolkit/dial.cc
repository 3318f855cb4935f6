#include "ui/toolkit/dial.h"

#include <atkmm/object.h>
#include <gdkmm/general.h>
#include <gdkmm/window.h>

#include <string>

#include "core/i18n.h"
#include "core/property.h"
#include "ui/toolkit/centred_context.h"
#include "ui/toolkit/picture.h"

namespace zemblar {
namespace {

constexpr double centre = Dial::size / 2.0;
constexpr double max_speed = 126;
constexpr double degrees_in_all = 270;

void paint(const Cairo::RefPtr<Cairo::Context>& cr, const Glib::RefPtr<Gdk::Pixbuf>& picture) {
  if (!picture) return;
  Gdk::Cairo::set_source_pixbuf(cr, picture);
  cr->paint();
}

}  // namespace

Dial::Dial()
    : Glib::ObjectBase("Dial"),
      face_(load_resource("dial/face.svg")),
      needle_red_(load_resource("dial/needle-red.svg")),
      needle_black_(load_resource("dial/needle-black.svg")),
      glass_(load_resource("dial/glass.svg")) {
  set_has_window(false);
  register_property<unsigned>(this, "black", &Dial::get_black, &Dial::set_black);
  register_property<bool>(this, "black-visible", &Dial::get_black_visible,
                          &Dial::set_black_visible);
  register_property<unsigned>(this, "red", &Dial::get_red, &Dial::set_red);
  register_property<bool>(this, "red-visible", &Dial::get_red_visible, &Dial::set_red_visible);
  atk_object_set_role(get_accessible()->gobj(), ATK_ROLE_DIAL);
  get_accessible()->set_name(_("Speed Dial"));
}

template <typename T>
void Dial::change(T& field, T value, const char* property) {
  if (field == value) return;
  field = value;
  queue_draw();
  get_accessible()->set_description(describe());
  notify_property(*this, property);
}

void Dial::set_black(unsigned speed) {
  change(black_, speed, "black");
}
void Dial::set_black_visible(bool visible) {
  change(black_visible_, visible, "black-visible");
}
void Dial::set_red(unsigned speed) {
  change(red_, speed, "red");
}
void Dial::set_red_visible(bool visible) {
  change(red_visible_, visible, "red-visible");
}

Glib::ustring Dial::describe() const {
  Glib::ustring text;
  if (red_visible_) text = Glib::ustring::compose(_("Wanted speed: %1 of 126"), red_);
  if (!black_visible_) return text;
  if (!text.empty()) text += '\n';
  return text + Glib::ustring::compose(_("Actual speed: %1 of 126"), black_);
}

void Dial::on_size_request(Gtk::Requisition* requisition) {
  requisition->width = size;
  requisition->height = size;
}

bool Dial::on_expose_event(GdkEventExpose* event) {
  const auto cr = centred_context(*this, *event, size);
  paint(cr, face_);
  // The red needle's picture is drawn 20 pixels higher than the black one's.
  if (red_visible_) draw_needle(cr, needle_red_, red_, 100);
  if (black_visible_) draw_needle(cr, needle_black_, black_, 120);
  paint(cr, glass_);
  return true;
}

void Dial::draw_needle(const Cairo::RefPtr<Cairo::Context>& cr, const Picture& needle,
                       unsigned speed, double pivot) {
  cr->save();
  cr->translate(centre, centre);
  cr->rotate_degrees(speed * degrees_in_all / max_speed - degrees_in_all / 2);
  cr->translate(-centre, -pivot);
  paint(cr, needle);
  cr->restore();
}

}  // namespace zemblar

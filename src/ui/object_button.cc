#include "ui/object_button.h"

#include <glibmm/main.h>
#include <gtkmm/arrow.h>
#include <gtkmm/box.h>

#include <utility>

#include "core/i18n.h"
#include "core/object.h"
#include "core/property.h"
#include "ui/popup.h"

namespace zemblar {

ObjectButton::ObjectButton(ObjectChoices choices)
    : Glib::ObjectBase("ObjectButton"), choices_(std::move(choices)) {
  register_property<Object*>(this, "object", &ObjectButton::get_object, &ObjectButton::set_object);
  name_.set_alignment(0, 0.5);
  name_.set_ellipsize(Pango::ELLIPSIZE_END);
  name_.set_width_chars(16);
  auto* row = Gtk::manage(new Gtk::HBox(false, 4));
  row->pack_start(name_, true, true);
  row->pack_start(*Gtk::manage(new Gtk::Arrow(Gtk::ARROW_DOWN, Gtk::SHADOW_NONE)), false, false);
  add(*row);
  row->show_all();
  show_name();
}

ObjectButton::~ObjectButton() = default;

void ObjectButton::set_object(Object* object) {
  if (object == object_) return;
  object_ = object;
  renamed_ = {};
  deleted_ = {};
  if (object) {
    renamed_ = object->property_name().signal_changed().connect([this] { show_name(); });
    deleted_ = object->signal_deleted().connect([this] { set_object(nullptr); });
  }
  show_name();
  notify_property(*this, "object");
}

std::unique_ptr<Gtk::Menu> ObjectButton::make_menu() {
  return std::make_unique<ObjectMenuBase>(
      choices_, [this](Object* object) { set_object(object); }, true);
}

// A closed menu goes in the next turn, when its choice has been made: thousands of entries that
// follow their objects would cost much, and nobody sees them.
void ObjectButton::on_clicked() {
  drop_menu_.disconnect();
  menu_ = make_menu();
  menu_->signal_hide().connect([this] {
    drop_menu_ = Glib::signal_idle().connect([this] {
      menu_.reset();
      return false;
    });
  });
  popup_below(*menu_, *this);
}

void ObjectButton::show_name() {
  const auto text = object_ ? object_->get_name() : choices_.none;
  name_.set_text(text);
  get_accessible()->set_name(text);
}

}  // namespace zemblar

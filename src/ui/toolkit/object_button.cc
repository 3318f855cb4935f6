#include "ui/toolkit/object_button.h"

#include <gtkmm/arrow.h>
#include <gtkmm/box.h>
#include <gtkmm/window.h>

#include <utility>

#include "core/i18n.h"
#include "core/object.h"
#include "core/property.h"

namespace zemblar {
namespace {

/// The path of the object below `container`, such as "Reader › Input"; empty for a direct child.
Glib::ustring path_of(const zemblar::Object& object, const zemblar::Object& container) {
  const auto* parent = object.get_parent();
  if (!parent || parent == &container) return {};
  auto path = object.get_name();
  for (; parent && parent != &container; parent = parent->get_parent()) {
    path = Glib::ustring::compose(_("%1 › %2"), parent->get_name(), path);
  }
  return path;
}

}  // namespace

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

void ObjectButton::set_choices(ObjectChoices choices) {
  choices_ = std::move(choices);
  show_name();
}

void ObjectButton::emphasize() {
  auto bold = Pango::Attribute::create_attr_weight(Pango::WEIGHT_BOLD);
  Pango::AttrList attributes;
  attributes.insert(bold);
  name_.set_attributes(attributes);
}

std::unique_ptr<Gtk::Menu> ObjectButton::make_menu() {
  return std::make_unique<ObjectMenuBase>(
      choices(), [this](Object* object) { set_object(object); }, true);
}

ObjectChoices ObjectButton::choices() const {
  auto offered = choices_;
  offered.chosen = object_;
  return offered;
}

void ObjectButton::on_clicked() {
  grab_focus();  // an access key does not, and Tab would go on from elsewhere
  picker_.ask(
      dynamic_cast<Gtk::Window*>(get_toplevel()), this, choices(),
      [this](Object* object) { set_object(object); }, true);
}

void ObjectButton::show_name() {
  const auto text = object_ ? object_->get_name() : choices_.none;
  name_.set_text(text);
  get_accessible()->set_name(text);
  update_tooltip();
}

void ObjectButton::explain(const Glib::ustring& text) {
  explanation_ = text;
  update_tooltip();
}

// Inputs of several readers have the same names, so the tooltip shows the path.
void ObjectButton::update_tooltip() {
  Glib::ustring text = object_ ? path_of(*object_, choices_.container()) : "";
  if (!text.empty() && !explanation_.empty()) text += "\n";
  set_tooltip_text(text + explanation_);
}

}  // namespace zemblar

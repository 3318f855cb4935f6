#pragma once

#include <glibmm/propertyproxy.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include <memory>

#include "runtime/scoped_connection.h"
#include "ui/toolkit/object_menu.h"
#include "ui/toolkit/object_picker.h"

namespace zemblar {

/// A button that shows the name of the chosen object, or "(None)", and asks for another one when
/// pressed.
///
/// It follows the object's name, and chooses nothing once the object has ended, as it does when
/// another layout is opened.
class ObjectButton : public Gtk::Button {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  explicit ObjectButton(ObjectChoices choices);
  ~ObjectButton() override;

  [[nodiscard]] Object* get_object() const { return object_; }
  void set_object(Object* object);
  Glib::PropertyProxy<Object*> property_object() { return {this, "object"}; }

  /// From now on other objects are offered; the chosen one stays.
  void set_choices(ObjectChoices choices);
  /// The tooltip gets this text, below the path of the chosen object where names repeat.
  void explain(const Glib::ustring& text);
  /// Shows the name in bold letters.
  void emphasize();
  /// A new menu of what can be chosen now.
  [[nodiscard]] std::unique_ptr<Gtk::Menu> make_menu();

 protected:
  void on_clicked() override;

 private:
  void show_name();
  void show_place();
  [[nodiscard]] ObjectChoices choices() const;

  ObjectChoices choices_;
  Glib::ustring explanation_;
  Object* object_ = nullptr;
  Gtk::Label name_;
  ObjectPicker picker_;
  ScopedConnection renamed_;
  ScopedConnection deleted_;
};

}  // namespace zemblar

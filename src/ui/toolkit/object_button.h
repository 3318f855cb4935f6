#pragma once

#include <glibmm/propertyproxy.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include <memory>

#include "runtime/scoped_connection.h"
#include "ui/toolkit/object_menu.h"
#include "ui/toolkit/object_picker.h"

namespace zemblar {

/// A button that shows the name of the chosen object, or "(None)". Pressing it lets the user choose
/// another one.
///
/// The name is kept up to date. When the object ends, also because another layout is opened,
/// nothing is chosen.
class ObjectButton : public Gtk::Button {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  explicit ObjectButton(ObjectChoices choices);
  ~ObjectButton() override;

  [[nodiscard]] Object* get_object() const { return object_; }
  void set_object(Object* object);
  Glib::PropertyProxy<Object*> property_object() { return {this, "object"}; }

  /// Changes which objects are offered; the chosen one stays.
  void set_choices(ObjectChoices choices);
  /// Sets the text of the tooltip. The tooltip shows it below the path of the chosen object; a
  /// direct child of the container has no path.
  void explain(const Glib::ustring& text);
  /// Shows the name in bold type.
  void emphasize();
  /// A new menu of the objects that can be chosen now.
  [[nodiscard]] std::unique_ptr<Gtk::Menu> make_menu();

 protected:
  void on_clicked() override;

 private:
  void show_name();
  void update_tooltip();
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

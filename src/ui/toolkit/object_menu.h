#pragma once

#include <gtkmm/menu.h>

#include <functional>

namespace zemblar {

class Device;
class Lok;
class Object;

/// What a selector offers: the objects below a container that satisfy a condition.
struct ObjectChoices {
  Glib::ustring heading;      ///< above the objects, as "Locomotives"
  Glib::ustring none;         ///< the entry that chooses nothing, as "(None)"
  Glib::ustring how_to_make;  ///< shown when there is no object to choose
  /// Asked anew for each menu, since the layout may have been replaced.
  std::function<Object&()> container;
  std::function<bool(const Object&)> offers;
  const Object* chosen = nullptr;  ///< gets a mark; alive while a menu is built
};

/// All locomotives of the current layout, at any depth of groups.
[[nodiscard]] ObjectChoices lok_choices();
/// All devices of the current layout that support a feature at least partly (Device::supports).
[[nodiscard]] ObjectChoices device_choices(const char* feature);
/// The same for what one of them drives: the layout's default device stands in for none.
[[nodiscard]] ObjectChoices driver_choices(const char* feature);

/// A menu of objects to choose from. Objects that hold objects to choose become submenus.
///
/// Built once, from what there is when it is built; an object that ends while the menu is open
/// turns its item insensitive. What is chosen now has a mark, and so have the menus that lead
/// there. `chosen` gets null for the entry that chooses nothing.
class ObjectMenuBase : public Gtk::Menu {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  using Chosen = std::function<void(Object*)>;
  ObjectMenuBase(const ObjectChoices& choices, Chosen chosen, bool with_none);

 private:
  /// Returns whether there was anything to choose.
  bool append_objects(Gtk::Menu& menu, Object& container, const ObjectChoices& choices);
  void append_text(const Glib::ustring& text);

  Chosen chosen_;
};

/// An ObjectMenuBase whose choices all are of class T.
template <typename T>
class ObjectMenu : public ObjectMenuBase {
 public:
  ObjectMenu(const ObjectChoices& choices, std::function<void(T*)> chosen, bool with_none = false)
      : ObjectMenuBase(
            choices,
            [chosen = std::move(chosen)](zemblar::Object* object) {
              chosen(dynamic_cast<T*>(object));
            },
            with_none) {}
};

}  // namespace zemblar

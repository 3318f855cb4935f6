#pragma once

#include <gtkmm/menu.h>

#include <functional>

namespace zemblar {

class Device;
class Lok;
class Object;

/// The choices of a selector: the objects below a container that satisfy a condition.
struct ObjectChoices {
  Glib::ustring heading;      ///< shown above the objects, such as "Locomotives"
  Glib::ustring none;         ///< the entry that chooses nothing, such as "(None)"
  Glib::ustring how_to_make;  ///< shown when there is no object to choose
  /// Called for each menu, since the layout may have been replaced.
  std::function<Object&()> container;
  std::function<bool(const Object&)> offers;
  const Object* chosen = nullptr;  ///< gets a mark, or null; must exist while a menu is built
};

/// All locomotives of the current layout, at any depth of groups.
[[nodiscard]] ObjectChoices lok_choices();
/// All devices of the current layout that support a feature at least partly (Device::supports).
[[nodiscard]] ObjectChoices device_choices(const char* feature);
/// The same for an object that such a device drives: choosing none means the layout's default
/// device.
[[nodiscard]] ObjectChoices driver_choices(const char* feature);

/// A menu of objects to choose from. Objects that contain such objects become submenus.
///
/// The constructor builds it from the present objects. When an object ends while the menu is open,
/// its item becomes insensitive. The chosen object has a mark, as have the submenus that contain
/// it. `chosen` gets null for the entry that chooses nothing.
class ObjectMenuBase : public Gtk::Menu {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  using Chosen = std::function<void(Object*)>;
  ObjectMenuBase(const ObjectChoices& choices, Chosen chosen, bool with_none);

 private:
  /// True if there was an object to choose.
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

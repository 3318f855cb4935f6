#include "ui/object_menu.h"

#include <gtkmm/menuitem.h>
#include <gtkmm/separatormenuitem.h>

#include <utility>

#include "core/i18n.h"
#include "core/layout.h"
#include "devices/device.h"
#include "locomotives/lok.h"
#include "ui/object_ref.h"

namespace zemblar {
namespace {

class ObjectItem : public Gtk::MenuItem {
 public:
  ObjectItem(zemblar::Object& object, const ObjectMenuBase::Chosen& chosen)
      : Gtk::MenuItem(object.get_name()), object_(&object) {
    deleted_ = object.signal_deleted().connect([this] { set_sensitive(false); });
    signal_activate().connect([this, chosen] {
      // The choice may end in the destruction of the menu.
      const auto call = chosen;
      if (object_) call(object_.get());
    });
  }

 private:
  ObjectRef<zemblar::Object> object_;
  ScopedConnection deleted_;
};

}  // namespace

ObjectChoices lok_choices() {
  return {.heading = _("Locomotives"),
          .none = _("(None)"),
          .how_to_make = _("No locomotive yet: make one in the track editor under Locomotives"),
          .container = []() -> Object& { return Layout::get().get_loks(); },
          .offers = [](const Object& o) { return dynamic_cast<const Lok*>(&o) != nullptr; }};
}

ObjectChoices device_choices(const char* feature) {
  return {.heading = _("Devices"),
          .none = _("(None)"),
          .how_to_make = _("No such device yet: make one in the track editor under Devices"),
          .container = []() -> Object& { return Layout::get().get_devices(); },
          .offers =
              [feature](const Object& o) {
                const auto* device = dynamic_cast<const Device*>(&o);
                return device && device->supports(feature) > 0;
              }};
}

ObjectChoices driver_choices(const char* feature) {
  auto choices = device_choices(feature);
  choices.none = _("(Default)");
  choices.how_to_make = _("No command station yet: make one under Devices");
  return choices;
}

ObjectMenuBase::ObjectMenuBase(const ObjectChoices& choices, Chosen chosen, bool with_none)
    : chosen_(std::move(chosen)) {
  if (with_none) {
    auto* none = Gtk::manage(new Gtk::MenuItem(choices.none));
    none->signal_activate().connect([chosen = chosen_] { chosen(nullptr); });
    append(*none);
    append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  }
  append_text(choices.heading);
  if (!append_objects(*this, choices.container(), choices)) append_text(choices.how_to_make);
  show_all();
}

bool ObjectMenuBase::append_objects(Gtk::Menu& menu, Object& container,
                                    const ObjectChoices& choices) {
  bool any = false;
  for (auto* object : container) {
    if (choices.offers(*object)) {
      menu.append(*Gtk::manage(new ObjectItem(*object, chosen_)));
      any = true;
    }
    if (object->empty()) continue;
    auto submenu = std::make_unique<Gtk::Menu>();
    if (!append_objects(*submenu, *object, choices)) continue;
    auto* item = Gtk::manage(new Gtk::MenuItem(object->get_name()));
    item->set_submenu(*Gtk::manage(submenu.release()));
    menu.append(*item);
    any = true;
  }
  return any;
}

void ObjectMenuBase::append_text(const Glib::ustring& text) {
  auto* item = Gtk::manage(new Gtk::MenuItem(text));
  item->set_sensitive(false);
  append(*item);
}

}  // namespace zemblar

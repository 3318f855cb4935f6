#include "ui/toolkit/object_menu.h"

#include <gtkmm/checkmenuitem.h>
#include <gtkmm/menuitem.h>
#include <gtkmm/separatormenuitem.h>

#include <memory>
#include <utility>

#include "core/i18n.h"
#include "core/layout.h"
#include "devices/device.h"
#include "locomotives/lok.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {
namespace {

/// A managed item.
Gtk::MenuItem* make_item(const Glib::ustring& name, bool marked) {
  if (!marked) return Gtk::manage(new Gtk::MenuItem(name));
  auto* item = Gtk::manage(new Gtk::CheckMenuItem(name));
  item->set_draw_as_radio();
  item->set_active();
  return item;
}

/// A managed item for an object, which may end before it is chosen.
Gtk::MenuItem* make_object_item(zemblar::Object& object, bool marked,
                                const ObjectMenuBase::Chosen& chosen) {
  auto* item = make_item(object.get_name(), marked);
  const auto what = std::make_shared<ObjectRef<zemblar::Object>>(&object);
  object.signal_deleted().connect(sigc::track_obj([item] { item->set_sensitive(false); }, *item));
  item->signal_activate().connect([what, chosen] {
    // The handler may destroy the menu.
    const auto call = chosen;
    if (*what) call(what->get());
  });
  return item;
}

bool stands_in(const zemblar::Object* object, const zemblar::Object& container) {
  while (object && object != &container) object = object->get_parent();
  return object != nullptr;
}

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
    auto* none = make_item(choices.none, !choices.chosen);
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
      menu.append(*make_object_item(*object, object == choices.chosen, chosen_));
      any = true;
    }
    if (object->empty()) continue;
    auto submenu = std::make_unique<Gtk::Menu>();
    if (!append_objects(*submenu, *object, choices)) continue;
    const bool leads_to_chosen = object != choices.chosen && stands_in(choices.chosen, *object);
    auto* item = make_item(object->get_name(), leads_to_chosen);
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

#include "ui/object_picker.h"

#include <glibmm/main.h>

#include <utility>

#include "core/object.h"
#include "ui/object_finder.h"
#include "ui/popup.h"

namespace zemblar {
namespace {

/// Stops counting above `few`.
unsigned count(Object& container, const ObjectChoices& choices) {
  unsigned found = 0;
  for (auto* object : container) {
    if (choices.offers(*object)) ++found;
    if (!object->empty()) found += count(*object, choices);
    if (found > ObjectPicker::few) break;
  }
  return found;
}

}  // namespace

ObjectPicker::~ObjectPicker() = default;

void ObjectPicker::ask(Gtk::Window* window, Gtk::Widget* below, const ObjectChoices& choices,
                       ObjectMenuBase::Chosen chosen, bool with_none) {
  drop_.disconnect();
  menu_.reset();
  finder_.reset();
  if (count(choices.container(), choices) > few) {
    finder_ = std::make_unique<ObjectFinder>(choices, std::move(chosen), with_none);
    if (window) finder_->set_transient_for(*window);
    finder_->set_position(below ? Gtk::WIN_POS_CENTER_ON_PARENT : Gtk::WIN_POS_MOUSE);
    drop_when_hidden(finder_);
    finder_->present();
    return;
  }
  menu_ = std::make_unique<ObjectMenuBase>(choices, std::move(chosen), with_none);
  drop_when_hidden(menu_);
  if (below) {
    popup_below(*menu_, *below);
  } else {
    menu_->popup(0, gtk_get_current_event_time());
  }
}

// In the next turn, when its choice has been made: thousands of entries that follow their objects
// would cost much, and nobody sees them.
template <typename T>
void ObjectPicker::drop_when_hidden(std::unique_ptr<T>& shown) {
  shown->signal_hide().connect([this, &shown] {
    drop_ = Glib::signal_idle().connect([&shown] {
      shown.reset();
      return false;
    });
  });
}

}  // namespace zemblar

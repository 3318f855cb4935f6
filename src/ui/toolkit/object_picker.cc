#include "ui/toolkit/object_picker.h"

#include <utility>

#include "core/object.h"
#include "ui/toolkit/object_finder.h"
#include "ui/toolkit/popup.h"

namespace zemblar {
namespace {

/// Counts the objects, but stops above `few`.
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
    drop_when_hidden(finder_, drop_);
    finder_->present();
    return;
  }
  menu_ = std::make_unique<ObjectMenuBase>(choices, std::move(chosen), with_none);
  drop_when_hidden(menu_, drop_);
  if (below) {
    if (!popup_below(*menu_, *below)) menu_.reset();
  } else {
    menu_->popup(0, gtk_get_current_event_time());
  }
}

}  // namespace zemblar

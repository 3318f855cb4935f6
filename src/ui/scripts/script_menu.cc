#include "ui/scripts/script_menu.h"

#include <atkmm/object.h>
#include <gtkmm/menuitem.h>

#include <algorithm>
#include <memory>
#include <unordered_map>

#include "core/i18n.h"
#include "core/layout.h"
#include "ui/toolkit/object_finder.h"
#include "ui/toolkit/object_picker.h"
#include "ui/toolkit/popup.h"

namespace zemblar {
namespace {

bool has_object(const ScriptChoice& choice) {
  return choice.object != nullptr;
}

bool is_long(const std::vector<ScriptChoice>& choices) {
  return std::ranges::count_if(choices, has_object) > ObjectPicker::few;
}

/// The choices, with one entry "Search…" instead of all objects.
std::vector<ScriptChoice> without_objects(const std::vector<ScriptChoice>& choices,
                                          const std::function<void()>& search) {
  std::vector<ScriptChoice> shorter;
  bool searchable = false;
  for (const auto& choice : choices) {
    if (!choice.object) {
      shorter.push_back(choice);
    } else if (!searchable) {
      shorter.push_back({.text = _("Search…"), .choose = search});
      searchable = true;
    }
  }
  return shorter;
}

/// Choices by their objects, for fast look-up: the finder asks for each object of the layout.
using ByObject = std::unordered_map<const Object*, ScriptChoice>;

ByObject by_object(const std::vector<ScriptChoice>& choices) {
  ByObject found;
  for (const auto& choice : choices) {
    if (choice.object) found.emplace(choice.object, choice);
  }
  return found;
}

}  // namespace

ScriptMenu::~ScriptMenu() = default;

void ScriptMenu::pop_up(const ScriptRow& row, unsigned arg, const Gdk::Rectangle& area,
                        Gtk::Window* parent, const std::function<void(ScriptLine&)>& added) {
  drop_menu_.disconnect();
  line_ = row.line;
  const auto choices =
      row.line && arg != ScriptRow::word ? row.line->choices(arg) : std::vector<ScriptChoice>{};
  if (is_long(choices)) {
    const auto shorter =
        without_objects(choices, [this, choices, parent] { search(choices, parent); });
    menu_.reset(ScriptUi::get().make_menu(shorter));
  } else {
    menu_.reset(row.make_menu(arg, added));
  }
  if (!menu_) return;
  if (menu_->items().empty()) return menu_.reset();
  const auto current = row.arg_text(arg);
  menu_->get_accessible()->set_name(current);
  drop_when_hidden(menu_, drop_menu_);
  if (!popup_below(*menu_, area)) return menu_.reset();
  for (auto& item : menu_->items()) {
    if (item.get_label().raw() == current.raw()) menu_->select_item(item);
  }
}

void ScriptMenu::search(const std::vector<ScriptChoice>& choices, Gtk::Window* parent) {
  const auto offered = std::make_shared<const ByObject>(by_object(choices));
  ObjectChoices objects{
      .heading = _("Search"),
      .none = {},
      .how_to_make = {},
      .container = []() -> Object& { return Layout::get(); },
      .offers = [offered](const Object& object) { return offered->contains(&object); }};
  const auto chosen = [offered](Object* object) {
    const auto choice = offered->find(object);
    if (choice != offered->end()) choice->second.choose();
  };
  finder_ = std::make_unique<ObjectFinder>(objects, chosen, false);
  if (parent) finder_->set_transient_for(*parent);
  finder_->set_position(Gtk::WIN_POS_CENTER_ON_PARENT);
  drop_when_hidden(finder_, drop_finder_);
  finder_->present();
}

void ScriptMenu::let_go(const ScriptLine& line) {
  if (line_ == &line) close();
}

void ScriptMenu::close() {
  if (menu_) menu_->popdown();
  if (finder_) finder_->hide();
}

}  // namespace zemblar

#include "core/panel_factory.h"

#include <map>
#include <typeindex>
#include <utility>

#include "core/object.h"

namespace zemblar {
namespace {

using Key = std::pair<std::type_index, PanelKind>;

std::map<Key, PanelFactory>& factories() {
  static std::map<Key, PanelFactory> by_class;
  return by_class;
}

}  // namespace

void register_panel(const std::type_info& type, PanelKind kind, PanelFactory factory) {
  factories()[Key(type, kind)] = std::move(factory);
}

Gtk::Widget* make_registered_panel(Object& object, PanelKind kind,
                                   const Glib::RefPtr<Gtk::SizeGroup>& labels) {
  const auto found = factories().find(Key(typeid(object), kind));
  return found == factories().end() ? nullptr : found->second(object, labels);
}

}  // namespace zemblar

#include "core/property.h"

#include <glibmm/property.h>

#include <cassert>
#include <unordered_map>

#include "core/change_count.h"

#ifdef NDEBUG
#error "Assertions stand between a programming fault and a crash on the table: build without NDEBUG"
#endif

namespace zemblar {
namespace {

using Tables = std::unordered_map<GType, PropertyTable>;

Tables& tables() {
  static Tables map;
  return map;
}

// The C++ part of an object may be destroyed while a toolkit reference still exists.
Glib::ObjectBase* wrapper_of(GObject* object) {
  return Glib::ObjectBase::_get_current_wrapper(object);
}

const PropertySpec* spec_of(GObject* object, guint id) {
  const auto found = tables().find(G_OBJECT_TYPE(object));
  return found == tables().end() ? nullptr : found->second.at(id);
}

void get_property(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
  const auto* spec = spec_of(object, id);
  if (!spec) return Glib::custom_get_property_callback(object, id, value, pspec);
  auto* wrapper = wrapper_of(object);
  if (!wrapper) return;
  Glib::ValueBase own;
  own.init(pspec->value_type);
  spec->get(wrapper, own);
  g_value_copy(own.gobj(), value);
}

void set_property(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
  const auto* spec = spec_of(object, id);
  if (!spec) {
    return Glib::custom_set_property_callback(object, id, const_cast<GValue*>(value), pspec);
  }
  auto* wrapper = wrapper_of(object);
  if (!wrapper) return;
  Glib::ValueBase own;
  own.init(value);
  spec->set(wrapper, own);
}

}  // namespace

PropertyTable& PropertyTable::of(Glib::ObjectBase& object) {
  return tables()[G_OBJECT_TYPE(object.gobj())];
}

const PropertySpec* PropertyTable::find(std::string_view name) const {
  for (const auto& spec : specs_) {
    if (spec.name.raw() == name) return &spec;
  }
  return nullptr;
}

const PropertySpec* PropertyTable::at(unsigned id) const {
  return id >= 1 && id <= specs_.size() ? &specs_[id - 1] : nullptr;
}

void PropertyTable::install(Glib::ObjectBase& object, PropertySpec spec,
                            const std::function<GParamSpec*(GParamFlags)>& create_param_spec) {
  auto* klass = G_OBJECT_GET_CLASS(object.gobj());
  klass->get_property = &get_property;
  klass->set_property = &set_property;
  // Setters notify by themselves, once per real change: the toolkit must not notify as well.
  auto flags = static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_EXPLICIT_NOTIFY);
  if (spec.set) flags = static_cast<GParamFlags>(flags | G_PARAM_WRITABLE);
  spec.pspec = create_param_spec(flags);
  specs_.push_back(std::move(spec));
  const auto id = static_cast<guint>(specs_.size());
  g_object_class_install_property(klass, id, specs_.back().pspec);
}

void notify_property(Glib::ObjectBase& object, const char* name) {
  ChangeCount::add(Change::state);
  if (const auto* spec = PropertyTable::of(object).find(name)) {
    g_object_notify_by_pspec(object.gobj(), spec->pspec);
  } else {
    g_object_notify(object.gobj(), name);
  }
}

void bind_property(Glib::ObjectBase& source, const char* source_name, Glib::ObjectBase& target,
                   const char* target_name) {
  const bool invert = target_name[0] == '!';
  if (invert) ++target_name;
  auto* spec1 = g_object_class_find_property(G_OBJECT_GET_CLASS(source.gobj()), source_name);
  auto* spec2 = g_object_class_find_property(G_OBJECT_GET_CLASS(target.gobj()), target_name);
  assert(spec1 && "Property Bind: Source Property Not Found");
  assert(spec2 && "Property Bind: Target Property Not Found");
  const bool ro1 = !(spec1->flags & G_PARAM_WRITABLE);
  const bool ro2 = !(spec2->flags & G_PARAM_WRITABLE);
  assert(!(ro1 && ro2) && "Property Bind: Both Source & Target ReadOnly");

  int flags = G_BINDING_SYNC_CREATE;
  if (!ro1 && !ro2) flags |= G_BINDING_BIDIRECTIONAL;
  if (invert) flags |= G_BINDING_INVERT_BOOLEAN;
  if (ro2) {
    g_object_bind_property(target.gobj(), target_name, source.gobj(), source_name,
                           static_cast<GBindingFlags>(flags));
  } else {
    g_object_bind_property(source.gobj(), source_name, target.gobj(), target_name,
                           static_cast<GBindingFlags>(flags));
  }
}

}  // namespace zemblar

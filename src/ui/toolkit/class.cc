#include "ui/toolkit/class.h"

#include <glibmm/utility.h>
#include <glibmm/value.h>

#include <memory>
#include <span>

namespace zemblar {
namespace {

void set_kept(GObject* object, guint, const GValue* value, GParamSpec* spec) {
  auto kept = std::make_unique<Glib::ValueBase>();
  kept->init(value);
  g_object_set_data_full(object, spec->name, kept.release(),
                         [](void* old) { delete static_cast<Glib::ValueBase*>(old); });
}

void get_kept(GObject* object, guint, GValue* value, GParamSpec* spec) {
  const auto* kept = static_cast<Glib::ValueBase*>(g_object_get_data(object, spec->name));
  if (kept) {
    g_value_copy(kept->gobj(), value);
  } else {
    g_param_value_set_default(spec, value);
  }
}

}  // namespace

bool ClassBase::register_type() {
  if (gtype_) return false;
  GTypeQuery parent{};
  g_type_query(parent_type(), &parent);
  GTypeInfo info{};
  info.class_size = static_cast<guint16>(parent.class_size);
  info.instance_size = static_cast<guint16>(parent.instance_size);
  info.class_init = [](void* g_class, void* self) {
    static_cast<ClassBase*>(self)->class_init(g_class);
  };
  info.class_data = this;
  gtype_ = g_type_register_static(parent_type(), name_, &info, GTypeFlags{});
  return true;
}

void ClassBase::adopt_properties(void* g_class, GType interface) {
  auto* const object_class = static_cast<GObjectClass*>(g_class);
  auto* const demanding = g_type_default_interface_ref(interface);
  guint count = 0;
  const auto specs =
      Glib::make_unique_ptr_gfree(g_object_interface_list_properties(demanding, &count));
  for (guint id = 1; auto* spec : std::span(specs.get(), count)) {
    if (g_object_class_find_property(object_class, spec->name)) continue;
    // gtkmm's own accessors expect a C++ property object for each property, which does not exist
    // here.
    object_class->set_property = set_kept;
    object_class->get_property = get_kept;
    g_object_class_override_property(object_class, id++, spec->name);
  }
  g_type_default_interface_unref(demanding);
}

}  // namespace zemblar

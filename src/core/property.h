#pragma once

#include <glibmm/object.h>
#include <glibmm/propertyproxy.h>
#include <glibmm/ustring.h>
#include <glibmm/value.h>
#include <functional>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace zemblar {

/// One property of one class: how the toolkit reads and writes it.
struct PropertySpec {
  Glib::ustring name;  ///< with dashes, as `block-control`
  /// Casts the object down, calls the member getter and stores the value.
  std::function<void(Glib::ObjectBase*, Glib::ValueBase&)> get;
  /// Wraps the member setter; empty for a read-only property.
  std::function<void(Glib::ObjectBase*, const Glib::ValueBase&)> set;
  GParamSpec* pspec = nullptr;  ///< owned by the toolkit class
};

/// The properties of one toolkit class, in the order in which they were registered.
///
/// There is one table per toolkit type, made when the first instance of a class registers its first
/// property. The toolkit's property id is the position in the table, from 1. A class with a table
/// must have no Glib::Property member, whose ids start from 1 as well.
class PropertyTable {
 public:
  /// The table of the object's most derived class; made on first use.
  static PropertyTable& of(Glib::ObjectBase& object);

  [[nodiscard]] const PropertySpec* find(std::string_view name) const;
  [[nodiscard]] const PropertySpec* at(unsigned id) const;

  /// Appends the property and installs it in the toolkit class of `object`.
  void install(Glib::ObjectBase& object, PropertySpec spec,
               const std::function<GParamSpec*(GParamFlags)>& create_param_spec);

 private:
  std::vector<PropertySpec> specs_;
};

/// Makes a member getter (and setter) a named toolkit property. The constructor of the class calls
/// it for each property; only the first instance of a class installs anything.
///
/// `getter` and `setter` are member functions of C, virtual ones included. A setter compares,
/// stores and notifies. It does nothing when the value is unchanged, since nothing else suppresses
/// a needless notification.
template <typename T, typename C, typename Getter, typename Setter = std::nullptr_t>
void register_property(C* object, const char* name, Getter getter, Setter setter = nullptr) {
  auto& table = PropertyTable::of(*object);
  if (table.find(name)) return;
  PropertySpec spec;
  spec.name = name;
  spec.get = [getter](Glib::ObjectBase* base, Glib::ValueBase& value) {
    static_cast<Glib::Value<T>&>(value).set(std::invoke(getter, dynamic_cast<C&>(*base)));
  };
  if constexpr (!std::is_null_pointer_v<Setter>) {
    spec.set = [setter](Glib::ObjectBase* base, const Glib::ValueBase& value) {
      std::invoke(setter, dynamic_cast<C&>(*base), static_cast<const Glib::Value<T>&>(value).get());
    };
  }
  table.install(*object, std::move(spec), [name](GParamFlags flags) {
    Glib::Value<T> prototype;
    prototype.init(Glib::Value<T>::value_type());
    return prototype.create_param_spec(name, name, name, static_cast<Glib::ParamFlags>(flags));
  });
}

/// Notifies the toolkit, and so everything bound to the property, of a change.
void notify_property(Glib::ObjectBase& object, const char* name);

/// Keeps two properties equal from now on, as long as both objects live.
///
/// `target_name` may begin with `!`: the two boolean values are then opposites. The binding works
/// both ways if both properties can be written, else from the read-only one to the other. The value
/// is copied at once. Asserts that both properties exist and that one of them can be written.
void bind_property(Glib::ObjectBase& source, const char* source_name, Glib::ObjectBase& target,
                   const char* target_name);

}  // namespace zemblar

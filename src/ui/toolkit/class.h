#pragma once

#include <glibmm/class.h>

#include <type_traits>

namespace zemblar {

/// A GObject class of our own, registered under its plain name.
///
/// The type is registered at first use, which needs a running toolkit; until then it is 0. An
/// object of this class lives until the process ends, because a type cannot be unregistered.
class ClassBase : public Glib::Class {
 public:
  explicit constexpr ClassBase(const char* name) : Glib::Class(), name_(name) {}

 protected:
  ~ClassBase() = default;

  [[nodiscard]] virtual GType parent_type() const = 0;
  /// Called by the toolkit with the class structure when the first object is about to be made.
  virtual void class_init(void* g_class) = 0;

  /// False when the type is registered already.
  bool register_type();
  /// Adds the properties that an interface requires and the parent class does not have. Their
  /// values are stored with the object and read by name.
  static void adopt_properties(void* g_class, GType interface);

 private:
  const char* name_;
};

/// The toolkit class of the widget `Self`, a `Base` of gtkmm that implements `Interfaces` as well.
///
/// To receive calls of an interface's virtual functions, the constructor of the widget passes
/// `Glib::ConstructParams(X_Class.init())` to `Base` and does not initialise `Glib::ObjectBase`. If
/// it passes null or a name there, gtkmm silently calls none of them. An interface that `Base` has
/// already need not be listed, but then its functions remain those of `Base`.
///
/// Include the private header of `Base` where the class object is defined.
template <typename Self, typename Base, typename... Interfaces>
class Class final : public ClassBase {
 public:
  using ClassBase::ClassBase;

  const Glib::Class& init() {
    static_assert(std::is_base_of_v<Base, Self> && (std::is_base_of_v<Interfaces, Self> && ...));
    if (register_type()) (Interfaces::add_interface(get_type()), ...);
    return *this;
  }

 private:
  // The parent is the C class of `Base`. gtkmm's class as the parent would call its handlers in an
  // endless loop, because its handlers chain up by one class only.
  [[nodiscard]] GType parent_type() const override { return Base::get_base_type(); }

  void class_init(void* g_class) override {
    Base::CppClassType::class_init_function(g_class, nullptr);
    (adopt_properties(g_class, Interfaces::get_type()), ...);
  }
};

}  // namespace zemblar

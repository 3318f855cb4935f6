#pragma once

#include <glibmm/class.h>

#include <type_traits>

namespace zemblar {

/// A toolkit class of our own, under its plain name.
///
/// The type is registered at first use, which needs a running toolkit; until then it is 0. Never
/// destroyed before the process ends, as a registered type is for good.
class ClassBase : public Glib::Class {
 public:
  explicit constexpr ClassBase(const char* name) : Glib::Class(), name_(name) {}

 protected:
  ~ClassBase() = default;

  [[nodiscard]] virtual GType parent_type() const = 0;
  /// Called by the toolkit with the class structure when the first object is about to be made.
  virtual void class_init(void* g_class) = 0;

  /// False when that has been done before.
  bool register_type();
  /// Lets the class have the properties that an interface demands and its parent has not got. The
  /// values are kept with the object and read by name.
  static void adopt_properties(void* g_class, GType interface);

 private:
  const char* name_;
};

/// The toolkit class of the widget `Self`, a `Base` of gtkmm that implements `Interfaces` as well.
///
/// For an interface's virtual functions to arrive at the widget its constructor passes
/// `Glib::ConstructParams(X_Class.init())` to `Base` and leaves `Glib::ObjectBase` at its default:
/// with null or a name there, gtkmm calls none of them and says nothing. An interface that
/// `Base` has already need not be named, but then its functions stay those of `Base`.
///
/// The private header of `Base` must be known where the class object is defined.
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
  // gtkmm's own class on top of it would call its handlers in a circle: it chains up by one step.
  [[nodiscard]] GType parent_type() const override { return Base::get_base_type(); }

  void class_init(void* g_class) override {
    Base::CppClassType::class_init_function(g_class, nullptr);
    (adopt_properties(g_class, Interfaces::get_type()), ...);
  }
};

}  // namespace zemblar

// What a property of the program costs against one of the toolkit's own.

#include <glibmm/object.h>
#include <glibmm/property.h>

#include "benchmarks/ratio.h"
#include "core/property.h"

namespace zemblar::bench {
namespace {

/// With as many properties as a locomotive, the one that is set in the middle of them.
class Registered : public Glib::Object {
 public:
  Registered() : Glib::ObjectBase("BenchRegistered") {
    for (const auto* name : {"one", "two", "three", "four"}) {
      register_property<int>(this, name, &Registered::get_value);
    }
    register_property<int>(this, "value", &Registered::get_value, &Registered::set_value);
    for (const auto* name : {"five", "six", "seven", "eight"}) {
      register_property<int>(this, name, &Registered::get_value);
    }
  }
  int get_value() const { return value_; }
  void set_value(int value) {
    if (value == value_) return;
    value_ = value;
    notify_property(*this, "value");
  }
  Glib::PropertyProxy<int> property_value() { return {this, "value"}; }

 private:
  int value_ = 0;
};

class Bare : public Glib::Object {
 public:
  Bare() : Glib::ObjectBase("BenchBare"), value(*this, "value", 0) {}
  Glib::Property<int> value;
};

struct Observed {
  Observed() {
    registered.property_value().signal_changed().connect([this] { ++seen; });
    bare.value.get_proxy().signal_changed().connect([this] { ++seen; });
  }
  Registered registered;
  Bare bare;
  std::size_t seen = 0;
};

const Figure set_observed("property: set with one observer, to the toolkit's own", "ns", 1.3,
                          [](Effort effort) {
                            auto scene = std::make_shared<Observed>();
                            const auto count = effort.count(200000);
                            return [scene, count] {
                              int a = 0;
                              int b = 0;
                              return versus(
                                  count, [&] { scene->registered.set_value(++a); },
                                  [&] { scene->bare.value.set_value(++b); });
                            };
                          });

}  // namespace
}  // namespace zemblar::bench

// Whether work on a document grows with its size, and not faster.

#include <vector>

#include "benchmarks/layout_scene.h"
#include "benchmarks/ratio.h"

namespace zemblar::bench {
namespace {

constexpr std::size_t many = 10000;
constexpr std::size_t few = 1000;
constexpr double goal = 11.0;

/// Milliseconds of the work on a document of `count` objects, which it makes before.
using Work = std::function<double(std::size_t count)>;

/// Milliseconds of `body`, begun with caches that hold something else, as they do when a person
/// does something: a document of 1,000 objects that was made just now would lie in them whole, one
/// of 10,000 would not, and the growth would be that of the processor's memory.
template <class Body>
double milliseconds_from_cold(Body&& body) {
  constexpr std::size_t more_than_caches = 16 << 20;
  constexpr std::size_t line = 64;
  static std::vector<char> other(more_than_caches);
  for (std::size_t at = 0; at < other.size(); at += line) ++other[at];
  keep(other[0]);
  return milliseconds(body);
}

Figure growth(const std::string& what, const Work& work) {
  return Figure("layout: " + what + " 10,000 objects, to 1,000", "ms", goal,
                [work](Effort effort) -> Round {
                  const auto large = effort.count(many);
                  const auto small = effort.count(few);
                  return [=] {
                    // The small document is measured as often as it fits into the large one, so
                    // that both last as long.
                    Sample sample;
                    const std::size_t times = large / small;
                    for (std::size_t i = 0; i < times; ++i) {
                      sample.floor += work(small) / static_cast<double>(times);
                    }
                    sample.figure = work(large);
                    return sample;
                  };
                });
}

const Figure opening = growth("open", [](std::size_t count) {
  fill_with_loks(count);
  const auto bytes = Layout::get().serialize();
  Layout::get().new_document(false);
  return milliseconds_from_cold([&] { open_or_throw(bytes); });
});

const Figure saving = growth("write", [](std::size_t count) {
  fill_with_loks(count);
  return milliseconds_from_cold([] { keep(Layout::get().serialize()); });
});

const Figure adding = growth("add", [](std::size_t count) {
  return milliseconds_from_cold([&] { fill_with_loks(count); });
});

/// As the object list of a window does, which shows every name.
struct NameList {
  ScopedConnection renamed = Layout::get().signal_object_renamed().connect(
      [](Object* object) { keep(object->get_name()); });
};

void for_each_object(const std::function<void(Object&)>& visit) {
  for (auto* lok : Layout::get().get_loks()) {
    visit(*lok);
    for (auto* function : *lok) visit(*function);
  }
}

const Figure renaming = growth("rename", [](std::size_t count) {
  fill_with_loks(count);
  const NameList list;
  return milliseconds_from_cold(
      [] { for_each_object([](Object& object) { object.set_name(object.get_name() + " B"); }); });
});

const Figure destroying = growth("destroy", [](std::size_t count) {
  fill_with_loks(count);
  return milliseconds_from_cold([] { Layout::get().get_loks().destroy_children(); });
});

}  // namespace
}  // namespace zemblar::bench

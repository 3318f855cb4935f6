// Whether work on a document grows with its size, and not faster.

#include "benchmarks/layout_scene.h"
#include "benchmarks/ratio.h"

namespace zemblar::bench {
namespace {

constexpr std::size_t many = 10000;
constexpr std::size_t few = 1000;
constexpr double goal = 12.0;

/// Milliseconds of `work` on a document of `count` objects, made by `prepare`.
using Work = std::function<double(std::size_t count)>;

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
  return milliseconds([&] { open_or_throw(bytes); });
});

const Figure saving = growth("write", [](std::size_t count) {
  fill_with_loks(count);
  return milliseconds([] { keep(Layout::get().serialize()); });
});

const Figure adding =
    growth("add", [](std::size_t count) { return milliseconds([&] { fill_with_loks(count); }); });

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
  return milliseconds(
      [] { for_each_object([](Object& object) { object.set_name(object.get_name() + " B"); }); });
});

const Figure destroying = growth("destroy", [](std::size_t count) {
  fill_with_loks(count);
  return milliseconds([] { Layout::get().get_loks().destroy_children(); });
});

}  // namespace
}  // namespace zemblar::bench

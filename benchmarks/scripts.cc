// What scripts cost while the railway runs.

#include <ctime>
#include <memory>

#include "benchmarks/ratio.h"
#include "benchmarks/track_scene.h"
#include "core/collections.h"
#include "locomotives/lok.h"
#include "runtime/timer.h"
#include "scripts/script.h"
#include "scripts/script_command_wait.h"
#include "scripts/script_event_occupied.h"
#include "scripts/script_registry.h"

namespace zemblar::bench {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t block_count = 1000;
constexpr std::size_t script_count = 1000;

/// A script on any of many blocks, all of which are occupied.
struct Watched {
  Watched() : line(new ScriptEventOccupied) {
    for (const auto* zone : row_of_zones(block_count)) detector_of(zone).occupy(true);
    Layout::get().get_scripts().add(new Script)->add_condition(line);
    line->choose_any();
  }
  void evaluate() const { line->signal_triggered().emit(); }
  /// What whoever writes it by hand would do.
  static void walk() {
    unsigned found = 0;
    for (auto* member : Layout::get().get_all_blocks().members()) {
      const auto* block = static_cast<Block*>(member);
      if (block->get_lok() || block->occupied()) ++found;
    }
    keep(found);
  }

  ScriptEventOccupied* line;
};

const Figure evaluation("script: evaluate any of 1,000 blocks, to a bare loop over them", "ns", 5,
                        [](Effort effort) {
                          const auto scene = std::make_shared<Watched>();
                          const auto count = effort.count(2000);
                          return [scene, count] {
                            return versus(
                                count, [&] { scene->evaluate(); }, &Watched::walk);
                          };
                        });

double processor_ms() {
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
}

/// Processor time of a main loop that has next to nothing to do: a beat, as a slow device has.
double idle_loop(std::chrono::milliseconds duration) {
  auto left = duration / 5ms;
  const auto beat = Timeout::every(5ms, [&left] { return --left > 0; });
  const auto before = processor_ms();
  while (left > 0) g_main_context_iteration(nullptr, TRUE);
  return processor_ms() - before;
}

ScriptCommand* wait_for_an_hour(Script& script) {
  auto* wait = new ScriptCommandWait(script);
  wait->set_spin_value(1, 3600);
  return wait;
}

/// Waits for its turn at the second block, which another train has.
ScriptCommand* reserve_second(Script& script) {
  auto* reserve = create_script_command("reserve", script);
  reserve->choices(2).back().choose();
  return reserve;
}

void start_waiting(ScriptCommand* (*waits)(Script& script)) {
  const auto zones = row_of_zones(2);
  for (auto* zone : zones) zone->set_lok(Layout::get().get_loks().add(new Lok));
  for (std::size_t i = 0; i < script_count; ++i) {
    auto* script = Layout::get().get_scripts().add(new Script);
    script->add_command(waits(*script));
    auto* line = new ScriptEventOccupied;
    script->add_condition(line);
    line->choose(zones[0]);
  }
}

Round idle_beside(ScriptCommand* (*waits)(Script& script), Effort effort) {
  const auto duration = effort.quick ? 50ms : 500ms;
  return [waits, duration] {
    Sample sample;
    row_of_zones(1);
    sample.floor = idle_loop(duration);
    start_waiting(waits);
    sample.figure = idle_loop(duration);
    row_of_zones(1);
    idle_loop(10ms);  // what waited ends
    return sample;
  };
}

const Figure waiting("script: an idle main loop with 1,000 scripts that wait, to none", "ms", 1.5,
                     [](Effort effort) { return idle_beside(wait_for_an_hour, effort); });
const Figure reserving("script: an idle main loop with 1,000 scripts that reserve, to none", "ms",
                       1.5, [](Effort effort) { return idle_beside(reserve_second, effort); });

}  // namespace
}  // namespace zemblar::bench

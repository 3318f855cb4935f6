#include "simulator/soak/soak_damage.h"

#include <cairomm/surface.h>
#include <gtkmm/main.h>

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "core/document_text.h"
#include "core/layout.h"
#include "core/status.h"
#include "diagram/view.h"
#include "diagram/view_object.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "runtime/timer.h"
#include "scripts/script.h"
#include "scripts/script_entry.h"
#include "simulator/soak/damage.h"
#include "simulator/soak/process_memory.h"
#include "simulator/soak/random_layout.h"
#include "simulator/trains/track_reader.h"
#include "track/point_base.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

class DamagedLayout {
 public:
  DamagedLayout(std::uint64_t seed, const DamageOptions& options, VirtualClock& clock)
      : chance_(seed), options_(options), clock_(clock), in_private_form_(chance_.happens(0.25)) {}

  void run(DamageResult& result) {
    const auto honest = honest_text();
    const auto honest_rise =
        rise_of_memory([&] { require(open(honest), "the honest layout: " + status()); });
    const auto text = damaged(honest, chance_);
    Layout::get().new_document(false);
    bool opened = false;
    const auto start = std::chrono::steady_clock::now();
    const auto damaged_rise = rise_of_memory([&] { opened = open_or_stay(text); });
    if (opened) use();
    const auto taken = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    ++(opened ? result.opened : result.refused);
    result.longest = std::max(result.longest, taken);
    require(taken <= options_.longest, "it takes " + std::to_string(taken.count()) + " ms");
    judge_memory(result, damaged_rise, honest_rise, text.size(), honest.size());
  }

 private:
  static void require(bool good, const std::string& otherwise) {
    if (!good) throw std::runtime_error(otherwise);
  }
  static std::string status() { return get_status().raw(); }

  std::string honest_text() {
    Layout::get().new_document(false);
    fill_at_random(chance_, in_private_form_);
    auto text = write();
    Layout::get().new_document(false);
    return text;
  }
  [[nodiscard]] std::string write() const {
    return in_private_form_ ? DocumentText::whole() : Layout::get().serialize();
  }
  [[nodiscard]] bool open(const std::string& text) const {
    return in_private_form_ ? Layout::open_copy(text, true, "damaged")
                            : Layout::open_bytes("damaged.zblt", text);
  }

  [[nodiscard]] bool open_or_stay(const std::string& text) const {
    const auto* const before = &Layout::get();
    const bool opened = open(text);
    require(get_status().validate(), "the status line is no UTF-8");
    if (opened) return true;
    require(before == &Layout::get(), "what was refused has become the document");
    require(status().size() > std::string("Couldn't open damaged: ").size(), "refused in silence");
    return false;
  }

  // Small ones differ by chance: what the process has at hand already.
  void judge_memory(DamageResult& result, std::size_t taken, std::size_t honest_taken,
                    std::size_t size, std::size_t honest_size) const {
    constexpr double at_hand = 1024;
    const auto share = std::max(1.0, static_cast<double>(size) / static_cast<double>(honest_size));
    const auto times =
        static_cast<double>(taken) / (share * std::max(at_hand, static_cast<double>(honest_taken)));
    result.most_memory = std::max(result.most_memory, times);
    require(
        times <= options_.most_memory,
        "it takes " + std::to_string(taken) + " kB, an honest one " + std::to_string(honest_taken));
  }

  void use() {
    come_back_the_same();
    paint();
    drive();
    come_back_the_same();
  }

  void come_back_the_same() const {
    const auto first = write();
    require(open(first), "it does not open again: " + status());
    const auto second = write();
    require(first == second, "it is not written the same again");
  }

  static void paint() {
    auto surface = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, 400, 300);
    const auto context = Cairo::Context::create(surface);
    for (auto* child : Layout::get().get_views()) {
      const auto& view = dynamic_cast<View&>(*child);
      SelectionTable table;
      for (const auto& object : view.get_objects()) {
        object->draw(context, true);
        object->draw_runtime(context);
        object->draw_tags(context, true, table);
      }
    }
    context->paint();  // throws if the context has become unusable
  }

  /// Detectors report at random, the operator does this and that, scripts run.
  void drive() {
    auto& layout = Layout::get();
    auto* reader = layout.get_devices().add(new TrackReader);
    std::vector<TrackInput*> inputs;
    for (auto* block : layout.get_blocks()) {
      inputs.push_back(reader->add_input());
      dynamic_cast<Block&>(*block).set_input(inputs.back());
    }
    for (auto* script : layout.get_scripts()) dynamic_cast<Script&>(*script).start();
    for (int i = 0; i < 20; ++i) {
      clock_.advance(chance_.between(10ms, 500ms));
      if (!inputs.empty()) inputs[chance_.below(inputs.size())]->set_current(chance_.happens(0.5));
      operate(layout);
    }
    reader->destroy();
    clock_.advance(5s);
  }

  void operate(Layout& layout) {
    for (auto* point : layout.get_points()) {
      const auto states = dynamic_cast<PointBase&>(*point).states();
      if (!states.empty()) states[chance_.below(states.size())]->activate();
    }
    std::vector<Lok*> loks;
    collect(layout, loks);
    for (auto* lok : loks) {
      lok->set_speed(static_cast<unsigned>(chance_.below(127)));
      lok->set_direction(chance_.happens(0.5) ? Direction::Forwards : Direction::Reverse);
      for (auto* function : *lok)
        dynamic_cast<Function&>(*function).set_state(chance_.happens(0.5));
    }
    layout.set_block_control(chance_.happens(0.9));
    layout.set_track_power(chance_.happens(0.5));
  }

  Chance chance_;
  const DamageOptions& options_;
  VirtualClock& clock_;
  bool in_private_form_;
};

}  // namespace

DamageResult run_damage(const DamageOptions& options, void (*on_layout)(std::uint64_t seed)) {
  Gtk::Main::init_gtkmm_internals();  // for fonts; no display
  VirtualClock clock;
  Layout::get(new Layout).new_document(false);
  DamageResult result;
  for (auto seed = options.seed; seed < options.seed + options.count; ++seed) {
    if (on_layout) on_layout(seed);
    try {
      DamagedLayout(seed, options, clock).run(result);
    } catch (const std::exception& error) {
      throw std::runtime_error("seed " + std::to_string(seed) + ": " + error.what());
    }
  }
  Layout::get().destroy();
  return result;
}

}  // namespace zemblar::simulator

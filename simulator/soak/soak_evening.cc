#include "simulator/soak/soak_evening.h"

#include <glibmm/convert.h>
#include <glibmm/exceptionhandler.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "core/status.h"
#include "locomotives/function.h"
#include "locomotives/last_stop.h"
#include "locomotives/lok_registry.h"
#include "locomotives/moving_trains.h"
#include "scripts/script.h"
#include "simulator/bus/bus_faults.h"
#include "simulator/railway/sample_railway.h"
#include "simulator/soak/evening_editor.h"
#include "simulator/soak/process_memory.h"
#include "simulator/soak/temporary_home.h"
#include "track/point_base.h"
#include "track/zone.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using Hours = std::chrono::duration<double, std::ratio<3600>>;

constexpr milliseconds step = 500ms;
constexpr milliseconds shortest_pause = 500ms;  // between two things that the operator does
constexpr milliseconds longest_pause = 8s;
constexpr milliseconds settle_interval = 8min;
constexpr milliseconds longest_fault = 6s;
/// An ECoS connection that stood is given up after 14 s, and trains are told within 5 s.
constexpr milliseconds allowed_return = 25s;
constexpr milliseconds longest_new = 20s;
constexpr milliseconds longest_stand = 1min;  // with a train that does not move
/// From the rails over the bus with two readers, and from there over the ECoS.
constexpr milliseconds longest_report = 300ms;
constexpr milliseconds longest_command = 50ms;
constexpr unsigned slowest = 40;  // speed step
constexpr unsigned fastest = 126;
constexpr double millimetres = 1000;  // in a metre

std::optional<std::string> escaped_exception;

void note_exception() {
  try {
    throw;
  } catch (const Glib::Exception& error) {
    escaped_exception = error.what().raw();
  } catch (const std::exception& error) {
    escaped_exception = error.what();
  } catch (...) {
    escaped_exception = "something";
  }
}

long resident_memory() {
  ::malloc_trim(0);
  return static_cast<long>(process_memory("VmRSS"));
}

template <typename T, typename Visit>
void for_each(const Object& parent, const Visit& visit) {
  for (auto* child : parent) {
    if (auto* one = dynamic_cast<T*>(child)) visit(*one);
  }
}

bool is_free(const BlockLink* link) {
  const auto* block = link ? link->get_block() : nullptr;
  return !block || (!block->get_lok() && !block->occupied());
}

class EveningRun {
 public:
  explicit EveningRun(const EveningOptions& options)
      : options_(options),
        chance_(options.seed),
        scene_(shipped(), options.seed),
        witness_(scene_.railway.track, longest_report, longest_command),
        editor_(chance_),
        file_(home_.path() + "/saved.zblt") {
    Socket::make_by([this] { return scene_.station.socket(); });
    Glib::add_exception_handler(sigc::ptr_fun(note_exception));
    out_of_reach_ = Decoder::signal_out_of_reach().connect(sigc::ptr_fun(&LastStop::send));
    leaving_ = CommandStation::signal_leaving_default().connect(
        sigc::ptr_fun(&stop_before_leaving_default));
    collisions_ = scene_.railway.track.signal_event().connect(
        [this](const TrackEvent& event) { judge(event); });
    for (const auto& train : scene_.railway.track.trains()) witness_.add(*train, nullptr);
    follow_layout();
    for (auto& driven : witness_.trains()) witness_.note_placed(driven);
  }
  ~EveningRun() {
    standing_ = {};
    opening_.cancel();
    end_faults();
    Socket::make_by({});
  }
  EveningRun(const EveningRun&) = delete;
  EveningRun& operator=(const EveningRun&) = delete;

  EveningResult run() {
    first_drive();
    const auto start = scene_.clock.now();
    const auto all = std::chrono::duration_cast<Clock::duration>(Hours(options_.hours));
    settle_at_ = start + settle_interval;
    go_on_until(start + all / 4);
    result_.memory_at_quarter = resident_memory();
    go_on_until(start + all);
    result_.memory_at_end = resident_memory();
    for (const auto& train : scene_.railway.track.trains()) {
      result_.travelled += scene_.railway.track.travelled(*train) / millimetres;
    }
    return result_;
  }

 private:
  struct Deed {
    const char* name;
    unsigned weight;
    void (EveningRun::*act)();
  };
  static const std::vector<Deed>& deeds() {
    using Run = EveningRun;
    static const std::vector<Deed> all{{"drives", 40, &Run::drive},
                                       {"throws a point", 12, &Run::throw_point},
                                       {"edits", 30, &Run::edit},
                                       {"starts the scripts", 3, &Run::start},
                                       {"helps by hand", 2, &Run::help},
                                       {"stops everything", 1, &Run::stop},
                                       {"switches the power", 2, &Run::switch_power},
                                       {"saves", 1, &Run::save},
                                       {"opens", 1, &Run::open},
                                       {"the station fails", 3, &Run::fail_station},
                                       {"the bus fails", 3, &Run::fail_bus}};
    return all;
  }

  void first_drive() {
    auto& express = SampleRailway::lok("Express 103");
    auto& local = SampleRailway::lok("Local 24");
    express.set_speed(100);
    pass(30s);
    local.set_speed(110);
    pass(60s);
    local.set_emergency_stop(true);
    pass(10s);
    local.set_speed(110);
    auto& railcar = SampleRailway::lok("Railcar 5");
    railcar.set_direction(opposite(railcar.get_direction()));
    dynamic_cast<Function&>(*railcar.child_at(0)).set_state(true);
    auto& point = dynamic_cast<PointBase&>(*Layout::get().get_points().find_child("East Point"));
    for (auto* state : {point.states().back(), point.states().front()}) {
      point.set_state(state);
      pass(1s);
    }
    start_scripts();
    pass(2min);
  }

  void go_on_until(Clock::time_point end) {
    while (scene_.clock.now() < end && result_.trouble.empty()) {
      pass(chance_.between(shortest_pause, longest_pause));
      if (scene_.clock.now() >= settle_at_) settle();
      act();
    }
  }

  void act() {
    const auto& deed = chance_.weighted(deeds());
    ++result_.deeds[deed.name];
    (this->*deed.act)();
  }

  // --- Time ---

  void pass(milliseconds time) {
    for (; time > 0ms && result_.trouble.empty(); time -= step) {
      follow_layout();
      scene_.clock.advance(step);
      scene_.station.clear_log();
      witness_.look();
      if (escaped_exception) fail("an exception has reached the main loop: " + *escaped_exception);
      clear_away();
    }
  }

  /// Blocks and locomotives come and go.
  void follow_layout() {
    scene_.railway.wire_blocks();
    for (auto section : {Section::blocks, Section::points}) {
      for_each<Block>(Layout::get().get_toplevel(section), [this](Block& block) { follow(block); });
    }
    const bool carries = station_carries();
    for (auto& driven : witness_.trains()) {
      witness_.assign(driven, lok_of(*driven.train));
      if (!carries || !is_driven_by_default(driven)) driven.unheard = scene_.clock.now();
    }
  }

  void follow(Block& block) {
    witness_.follow(block);
    const auto* input = block.get_input();
    if (bus_fault_ || !input || !input->active()) witness_.note_silence(block);
  }

  bool station_carries() const {
    const auto* device = station();
    return !station_fault_.armed() && device && device->get_use_as_default() &&
           device->link_state().phase == LinkPhase::in_service;
  }

  /// By its own locomotive alone.
  static bool is_driven_by_default(const Driven& driven) {
    const auto [number, is_long] = driven.train->options().address;
    return driven.lok && !is_shared(number) &&
           std::ranges::all_of(driven.lok->get_decoders(), [](const auto& decoder) {
             return decoder->get_commands_enabled() && !decoder->get_device();
           });
  }

  static Lok* lok_of(const Train& train) {
    const auto [number, is_long] = train.options().address;
    Lok* found = nullptr;
    for_each_lok(Layout::get().get_loks(), [&, number = number, is_long = is_long](Lok& lok) {
      if (!found && lok.has_address(Address(number, is_long))) found = &lok;
    });
    return found;
  }

  // --- What the operator does ---

  Driven& some_train() { return witness_.trains()[chance_.below(witness_.trains().size())]; }

  void drive() {
    auto* lok = some_train().lok;
    if (!lok) return;
    const double choice = chance_.fraction();
    if (choice < 0.65) {
      lok->set_speed(slowest + static_cast<unsigned>(chance_.below(fastest - slowest + 1)));
    } else if (choice < 0.75) {
      lok->set_speed(0);
    } else if (choice < 0.8) {
      lok->set_emergency_stop(true);
    } else if (choice < 0.88) {
      lok->set_direction(opposite(lok->get_direction()));
    } else if (auto* function = dynamic_cast<Function*>(lok->child_at(0))) {
      function->set_state(!function->get_state());
    }
  }

  void throw_point() {
    auto& points = Layout::get().get_points();
    auto* point = points.empty() ? nullptr
                                 : dynamic_cast<PointBase*>(points.child_at(
                                       static_cast<unsigned>(chance_.below(points.child_count()))));
    const auto states = point ? point->states() : std::vector<PointState*>();
    if (!states.empty()) point->set_state(states[chance_.below(states.size())]);
  }

  void edit() { ++result_.deeds["edits: " + std::string(editor_.act())]; }

  void start() { start_scripts(); }

  void stop() {
    stop_scripts();
    emergency_stop_all();
  }

  void help() {
    auto& driven = some_train();
    if (!driven.lok) return;
    if (driven.lok->get_brake()) driven.freed = scene_.clock.now();
    driven.lok->set_brake(false);
    if (driven.lok->get_blocks().empty() || chance_.happens(0.5)) return;
    auto& block = *driven.lok->get_blocks().front();
    witness_.note_freed(block);
    block.replace_lok(nullptr);
  }

  void switch_power() {
    Layout::get().set_track_power(false);
    power_on_ =
        Timeout::once(chance_.between(1s, 30s), [] { Layout::get().set_track_power(true); });
  }

  void save() {
    try {
      Layout::get().save_to(Glib::filename_to_uri(file_), true);
    } catch (const Glib::Error& error) {
      fail("a layout cannot be saved: " + error.what());
    }
  }

  /// When the trains stand: New, or nothing, and then what was saved or shipped.
  void open() {
    const auto go_on = [this] {
      const bool saved = chance_.happens(0.3) && std::filesystem::exists(file_);
      const auto path = saved ? file_ : shipped();
      if (chance_.happens(0.5)) return open_file(path);
      Layout::get().new_document(true);
      opening_ = Timeout::once(chance_.between(0s, longest_new), [this, path] { open_file(path); });
    };
    static_cast<void>(standing_.begin(go_on));
  }

  [[nodiscard]] std::string shipped() const { return options_.folder + "/sample.zblt"; }

  void open_file(const std::string& path) {
    if (!Layout::open(path)) return fail("a layout cannot be opened: " + get_status());
    scene_.railway.build();
    add_station();
    for (auto& driven : witness_.trains()) {
      if (driven.train->on_track()) witness_.note_placed(driven);
    }
  }

  static ECoS* station() {
    ECoS* found = nullptr;
    for_each<ECoS>(Layout::get().get_devices(), [&](ECoS& station) { found = &station; });
    return found;
  }
  void add_station() {
    if (!station()) Layout::get().get_devices().add(new ECoS(scene_.station.socket()));
    Layout::get().set_track_power(true);
  }

  // --- Faults ---

  void fail_station() {
    const auto victim = some_train().train->options().address.number;
    if (station_fault_.armed() || !scene_.station.locomotive(victim)) return;
    const auto fault = link_faults[chance_.below(link_faults.size())];
    ++result_.deeds[std::string("the station: ") + title(fault)];
    scene_.station.begin(fault, victim, chance_);
    station_fault_ =
        Timeout::once(chance_.between(0s, longest_fault), [this] { scene_.station.end(false); });
  }

  void fail_bus() {
    if (bus_fault_) return;
    bus_fault_ = &bus_faults()[chance_.below(bus_faults().size())];
    ++result_.deeds[std::string("the bus: ") + bus_fault_->name];
    bus_fault_->begin(failing());
    bus_fault_end_ = Timeout::once(chance_.between(0s, longest_fault), [this] { end_bus_fault(); });
  }

  FailingBus failing() { return {scene_.railway.bus, *scene_.hardware, chance_}; }

  void end_bus_fault() {
    if (const auto* fault = std::exchange(bus_fault_, nullptr)) fault->end(failing());
    bus_fault_end_.cancel();
  }

  void end_faults() {
    station_fault_.cancel();
    scene_.station.end(false);
    end_bus_fault();
  }

  // --- Trains meet, or stand ---

  void judge(const TrackEvent& event) {
    if (event.kind != TrackEvent::Kind::collision) return;
    const auto cause = cause_of_collision(witness_, event);
    ++result_.collisions[cause];
    for (const auto* train : {event.train, event.other}) ended_.push_back(train);
    if (cause != Cause::unexplained) return;
    fail(event.train->options().name + " has run into " + event.other->options().name + " in " +
         event.block->get_name() + ", unexplained");
  }

  void clear_away() {
    for (auto& driven : witness_.trains()) {
      if (scene_.clock.now() - driven.moved > longest_stand) ended_.push_back(driven.train);
      if (!driven.train->on_track()) bring_back(driven);
    }
    for (const auto* train : std::exchange(ended_, {})) take_away(*witness_.find(train));
  }

  void take_away(Driven& driven) {
    driven.moved = scene_.clock.now();
    scene_.railway.track.lift(*driven.train);
    if (!driven.lok) return;
    driven.lok->set_speed(0);
    const auto held = driven.lok->get_blocks();
    for (auto* block : held) block->clear_lok(driven.lok);
  }

  void bring_back(Driven& driven) {
    std::vector<Zone*> free;
    for_each<Zone>(Layout::get().get_blocks(), [&](Zone& zone) {
      const bool around = is_free(&zone.left) && is_free(zone.left.get_partner()) &&
                          is_free(zone.right.get_partner());
      if (around && zone.get_input() && zone.get_input()->active()) free.push_back(&zone);
    });
    if (free.empty() || !driven.lok || driven.lok->front) return;
    auto& zone = *free[chance_.below(free.size())];
    driven.lok->set_speed(0);
    driven.lok->set_direction(Direction::Forwards);
    if (!scene_.railway.track.place(*driven.train, chance_.happens(0.5) ? zone.right : zone.left))
      return;
    witness_.note_placed(driven);
  }

  // --- What has to be true in a pause ---

  void settle() {
    settle_at_ = scene_.clock.now() + settle_interval;
    end_faults();
    add_station();
    station()->set_use_as_default(true);
    auto waited = 0ms;
    for (; waited < allowed_return && !missing().empty(); waited += step) pass(step);
    result_.longest_return = std::max(result_.longest_return, waited);
    if (const auto what = missing(); !what.empty()) fail(what);
    ++result_.deeds["pauses"];
    if (!detectors_work()) open_file(shipped());
  }

  /// The editor may have deleted the bus.
  static bool detectors_work() {
    bool work = true;
    for_each<Zone>(Layout::get().get_blocks(), [&](Zone& zone) {
      work = work && (!zone.get_input() || zone.get_input()->active());
    });
    return work;
  }

  /// A wish that has not arrived, in words; empty when none is missing.
  std::string missing() {
    std::string what;
    for_each_lok(Layout::get().get_loks(), [&](Lok& lok) {
      for (const auto& decoder : lok.get_decoders()) {
        if (what.empty() && !has_arrived(*decoder.operator->())) {
          what = lok.get_name() + " is not told " + std::to_string(decoder->get_speed());
        }
      }
    });
    if (station()->link_state().phase != LinkPhase::in_service) {
      what = "the station is " + display_name(station()->link_state().phase);
    }
    return what;
  }

  bool has_arrived(const Decoder& decoder) {
    const auto number = decoder.get_address().get_addr();
    const bool is_driven = decoder.has_speed_here() && decoder.get_commands_enabled() &&
                           decoder.driving_device().active();
    if (!is_driven || is_shared(number)) return true;
    const auto known = scene_.station.locomotive(number);
    const auto speed =
        decoder.get_speed() == DecoderUpdate::emergency_stop ? 0 : decoder.get_speed();
    return known && known->speed == speed && decoder.state().mask == 0;
  }

  static bool is_shared(unsigned number) {
    unsigned users = 0;
    for_each_lok(Layout::get().get_loks(), [&](Lok& lok) {
      for (const auto& decoder : lok.get_decoders()) {
        if (decoder->get_address().get_addr() == number) ++users;
      }
    });
    return users > 1;
  }

  void fail(const std::string& what) {
    if (!result_.trouble.empty()) return;
    result_.trouble =
        what + ", at " + std::to_string(scene_.clock.now().time_since_epoch() / 1ms) + " ms";
  }

  EveningOptions options_;
  TemporaryHome home_;
  Chance chance_;
  SampleRailway scene_;
  TrackWitness witness_;
  EveningEditor editor_;
  std::string file_;
  ScopedConnection out_of_reach_;
  ScopedConnection leaving_;
  ScopedConnection collisions_;
  StandStill standing_;
  Timeout power_on_;
  Timeout opening_;  // after New
  Timeout station_fault_;
  const BusFault* bus_fault_ = nullptr;
  Timeout bus_fault_end_;
  Clock::time_point settle_at_{};
  std::vector<const Train*> ended_;  // whose journey is over
  EveningResult result_;
};

}  // namespace

EveningResult run_evening(const EveningOptions& options) {
  return EveningRun(options).run();
}

}  // namespace zemblar::simulator

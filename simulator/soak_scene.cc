#include "simulator/soak_scene.h"

#include <algorithm>
#include <sstream>

#include "core/layout.h"

namespace zemblar::simulator {
namespace {

constexpr std::size_t remembered_blocks = 12;
constexpr double standstill = 1;  // mm
/// From the release of the brake to the train's first movement, at most.
constexpr std::chrono::seconds start{1};
constexpr std::chrono::seconds farewell{5};

Layout& empty_layout() {
  auto& layout = Layout::get(new Layout);
  layout.new_document(false);
  return layout;
}

Driven::Time time_of(const std::map<const Block*, Driven::Time>& times, const Block* block) {
  const auto found = times.find(block);
  return found == times.end() ? Driven::never : found->second;
}

}  // namespace

Driven::Time Driven::came_into(const Block* block) const {
  const auto found = std::ranges::find(entered, block, [](const auto& one) { return one.first; });
  return found == entered.end() ? placed : found->second;
}

void Driven::enter(const Block* block, Time time) {
  entered.emplace_front(block, time);
  if (entered.size() > remembered_blocks) entered.pop_back();
}

bool Driven::place_is_right() const {
  if (!lok->front) return false;
  const auto holds = [this](const BlockLink* end) { return end->get_block()->get_lok() == lok; };
  return train->is_in(lok->back->get_block()) && holds(lok->front) && holds(lok->back);
}

// The head may be believed as far ahead as its own detectors reach.
bool Driven::faces_forwards() const {
  const bool forwards = train->forwards();
  const auto drawing = train->drawing_blocks();
  const auto draws_at = [&drawing](const Device* input) {
    return std::ranges::any_of(drawing, [input](auto* one) { return one->get_input() == input; });
  };
  for (const auto& piece : train->pieces()) {
    if (lok->front == (forwards ? piece.front : piece.rear)) return true;
  }
  auto* link = train->leading_link();
  for (std::size_t i = 0; i < remembered_blocks; ++i) {
    auto* in = link ? link->get_partner() : nullptr;
    if (!in || !draws_at(in->get_block()->get_input())) return false;
    link = in->get_opposite();
    if (link == lok->front) return true;
  }
  return false;
}

SoakScene::SoakScene(std::uint64_t seed, unsigned readers)
    : chance(seed),
      model(seed + 1),
      reader_(empty_layout().get_devices().add(new TrackReader)),
      station_(TrackStation::in_service(model)) {
  station_->delay = station_delay;
  if (readers > 0) {
    bus_ = std::make_unique<BusInService>(clock, readers);
    bus_->bus.serve(model);
  }
  model.signal_event().connect([this](const TrackEvent& event) { note(event); });
}

// What waits on fibers gets the time to notice.
SoakScene::~SoakScene() {
  for (const auto& driven : trains_) model.lift(*driven.train);
  if (bus_) bus_->bus.unplug();
  clock.advance(bus_ ? farewell : std::chrono::seconds(0));
  Layout::get().destroy();
  clock.advance(bus_ ? farewell : std::chrono::seconds(0));
}

void SoakScene::enter_block(Block& block, const std::string& name, double length,
                            const Block* shares_with) {
  block.set_name(name);
  Layout::get().get_blocks().add(&block);
  give_input(block, shares_with);
  model.set_length(&block, length);
  block.signal_route().connect([this, &block] { thrown_[&block] = clock.now(); });
  block.signal_lok_changed().connect([this, &block] { changed_hands_[&block] = clock.now(); });
  blocks_.push_back(&block);
}

// Neighbours are on different readers, as far as there are several.
void SoakScene::give_input(Block& block, const Block* shares_with) {
  if (shares_with) {
    block.set_input(shares_with->get_input());
    if (bus_) bus_->bus.wire_to_input(block);
    return;
  }
  if (!bus_) return block.set_input(reader_->add_input());
  const auto index = inputs_++;
  bus_->assign(block, index % bus_->readers(), index / bus_->readers());
}

Driven::Time SoakScene::thrown(const Block* block) const {
  return time_of(thrown_, block);
}

Driven::Time SoakScene::changed_hands(const Block* block) const {
  return time_of(changed_hands_, block);
}

// --- Trains ---

Lok* SoakScene::new_lok(const TrainOptions& options) {
  auto* lok = Layout::get().get_loks().add(new Lok);
  lok->set_name(options.name);
  lok->get_decoders().front()->set_address(
      Address(options.address.number, options.address.is_long));
  lok->signal_direction_overlay_changed().connect([this, lok] {
    if (auto* driven = find(lok)) driven->reversed = clock.now();
  });
  lok->signal_brake_changed().connect([this, lok] {
    auto* driven = find(lok);
    if (!driven) return;
    (lok->get_brake() ? driven->braked : driven->released) = clock.now();
    if (!lok->get_brake()) return;
    driven->front_at_brake = lok->front;
  });
  return lok;
}

Driven& SoakScene::add_train(TrainOptions options) {
  auto* lok = new_lok(options);
  trains_.push_back({&model.add_train(std::move(options)), lok});
  return trains_.back();
}

Driven* SoakScene::find(const Train* train) {
  const auto found = std::ranges::find(trains_, train, &Driven::train);
  return found == trains_.end() ? nullptr : &*found;
}

Driven* SoakScene::find(const Lok* lok) {
  const auto found = std::ranges::find(trains_, lok, &Driven::lok);
  return found == trains_.end() ? nullptr : &*found;
}

bool SoakScene::place(Driven& driven, BlockLink& towards) {
  // What was on the way to its former locomotive may have reached it.
  const auto& lok = *driven.lok;
  model.command(driven.train->options().address.number, lok.get_speed_overlay(),
                lok.get_direction_overlay() == Direction::Forwards);
  if (!model.place(*driven.train, towards)) return false;
  driven.entered.clear();
  driven.placed = driven.moved = clock.now();
  driven.enter(towards.get_block(), driven.placed);
  driven.turned = driven.reversed = driven.braked = driven.misplaced = Driven::never;
  return true;
}

void SoakScene::clear_away(Driven& driven) {
  model.lift(*driven.train);
  driven.lok->destroy();
  driven.lok = new_lok(driven.train->options());
}

void SoakScene::note(const TrackEvent& event) {
  auto* driven = find(event.train);
  if (!driven) return;
  if (event.kind == TrackEvent::Kind::turned) {
    driven->turned = clock.now();
    driven->enter(event.block, clock.now());
  }
  // In a block that it has only just come to it cannot be known yet.
  if (!driven->lok->front || !driven->faces_forwards()) driven->misplaced = clock.now();
  if (event.kind != TrackEvent::Kind::entered && event.kind != TrackEvent::Kind::collision) return;
  ++blocks_entered;
  driven->enter(event.block, clock.now());
}

// --- Time ---

void SoakScene::pass(std::chrono::milliseconds time) {
  clock.advance(time);
  for (auto& driven : trains_) {
    const double travelled = model.travelled(*driven.train);
    const bool waits = driven.train->on_track() && driven.lok->get_speed() > 0;
    if (waits && travelled - driven.travelled < standstill) continue;
    driven.moved = clock.now();
    driven.travelled = travelled;
  }
}

Clock::duration SoakScene::held_up(const Driven& driven) const {
  const bool starts = model.speed(*driven.train) > 0 || clock.now() - driven.released < start;
  return starts ? Clock::duration::zero() : clock.now() - driven.moved;
}

// --- Description ---

namespace {

std::string text(const BlockLink* link) {
  if (!link) return "nowhere";
  return link->get_block()->get_name().raw() + "." + link->get_block()->get_link_name(link);
}

}  // namespace

std::string SoakScene::describe() const {
  std::ostringstream out;
  const auto ago = [this](Driven::Time time) {
    return time == Driven::never ? -1 : std::chrono::duration<double>(clock.now() - time).count();
  };
  for (const auto& driven : trains_) {
    const auto* train = driven.train;
    const auto* lok = driven.lok;
    out << "  " << train->options().name << " on";
    for (const auto& piece : train->pieces()) out << ' ' << piece.block->get_name();
    if (train->on_track()) out << " towards " << text(train->leading_link());
    if (!train->on_track()) {
      out << " no track\n";
      continue;
    }
    out << "; believed " << text(lok->back) << ".." << text(lok->front) << ", holds";
    for (const auto* block : lok->get_blocks()) out << ' ' << block->get_name();
    out << ", moves " << model.speed(*train) << " to " << train->motion().target << " mm/s, step "
        << train->step() << (train->at_border() ? " at a border" : "") << ", speed "
        << lok->get_speed() << (lok->get_brake() ? " braked " : " brake lifted ")
        << ago(driven.braked) << " s ago, turned " << ago(driven.turned) << " s ago, reversed "
        << ago(driven.reversed) << " s ago, misplaced " << ago(driven.misplaced)
        << " s ago, placed " << ago(driven.placed) << " s ago, entered";
    for (const auto& [block, time] : driven.entered) {
      out << ' ' << block->get_name() << " -" << ago(time);
    }
    out << '\n';
  }
  return out.str();
}

}  // namespace zemblar::simulator

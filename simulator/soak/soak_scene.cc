#include "simulator/soak/soak_scene.h"

#include <algorithm>
#include <sstream>

#include "core/layout.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

/// From the release of the brake to the train's first movement, at most.
constexpr std::chrono::seconds start{1};
constexpr std::chrono::seconds farewell{5};

Layout& empty_layout() {
  auto& layout = Layout::get(new Layout);
  layout.new_document(false);
  return layout;
}

}  // namespace

SoakScene::SoakScene(std::uint64_t seed, unsigned readers)
    : chance(seed),
      model(seed + 1),
      witness(model, 0ms, station_delay),
      reader_(empty_layout().get_devices().add(new TrackReader)),
      station_(TrackStation::in_service(model)) {
  station_->delay = station_delay;
  if (readers > 0) {
    bus_ = std::make_unique<BusInService>(clock, readers);
    bus_->bus.serve(model);
  }
  model.signal_event().connect([this](const TrackEvent& event) {
    const bool entered =
        event.kind == TrackEvent::Kind::entered || event.kind == TrackEvent::Kind::collision;
    if (entered) ++blocks_entered;
  });
}

// What waits on fibers gets the time to notice.
SoakScene::~SoakScene() {
  for (const auto& driven : trains()) model.lift(*driven.train);
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
  witness.follow(block);
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

// --- Trains ---

Lok* SoakScene::new_lok(const TrainOptions& options) {
  auto* lok = Layout::get().get_loks().add(new Lok);
  lok->set_name(options.name);
  lok->get_decoders().front()->set_address(
      Address(options.address.number, options.address.is_long));
  return lok;
}

Driven& SoakScene::add_train(TrainOptions options) {
  auto* lok = new_lok(options);
  return witness.add(model.add_train(std::move(options)), lok);
}

bool SoakScene::place(Driven& driven, BlockLink& towards) {
  // What was on the way to its former locomotive may have reached it.
  const auto& lok = *driven.lok;
  model.command(driven.train->options().address.number, lok.get_speed_overlay(),
                lok.get_direction_overlay() == Direction::Forwards);
  if (!model.place(*driven.train, towards)) return false;
  witness.note_placed(driven);
  return true;
}

void SoakScene::clear_away(Driven& driven) {
  model.lift(*driven.train);
  driven.lok->destroy();
  witness.assign(driven, new_lok(driven.train->options()));
}

// --- Time ---

void SoakScene::pass(std::chrono::milliseconds time) {
  clock.advance(time);
  witness.look();
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

std::string SoakScene::describe() {
  std::ostringstream out;
  const auto ago = [this](Driven::Time time) {
    return time == Driven::never ? -1 : std::chrono::duration<double>(clock.now() - time).count();
  };
  for (const auto& driven : witness.trains()) {
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

#include "demo/railway.h"

#include <iostream>

#include "core/layout.h"
#include "locomotives/lok.h"
#include "track/zone.h"

namespace zemblar::demo {
namespace {

using simulator::TrackEvent;

constexpr double point_length = 250;  // mm; zones have a metre

void say(const std::string& text) {
  const simulator::EcosLogEntry entry{.time = std::chrono::system_clock::now(), .text = text};
  std::cout << simulator::format(entry) << std::endl;
}

/// The detector of the nearest block beside it that has one: points and crossings have none of
/// their own, since trains are longer than they are.
Device* shared_input(Block& block, const std::vector<std::string>& links) {
  for (const auto& name : links) {
    const auto* link = block.get_link(name);
    const auto* partner = link ? link->get_partner() : nullptr;
    if (partner && partner->get_block()->has_input()) return partner->get_block()->get_input();
  }
  return nullptr;
}

template <typename Visit>
void for_each_block(Section section, const Visit& visit) {
  for (auto* child : Layout::get().get_toplevel(section)) {
    if (auto* block = dynamic_cast<Block*>(child)) visit(*block);
  }
}

}  // namespace

Railway::Railway() : reader_(new simulator::TrackReader) {
  station_.on_log([this](const simulator::EcosLogEntry& entry) { on_station(entry); });
  station_.listen();
  station_.press_go();
  track_.sensor_options().longest_delay = std::chrono::milliseconds(80);
  track_.sensor_options().dropouts_per_minute = 6;
  track_.signal_event().connect([this](const TrackEvent& event) { on_track(event); });
}

Railway::~Railway() {
  station_.on_log({});
  reader_->destroy();
}

void Railway::build() {
  attach_detectors();
  put("Local 24", "North Line East", {.length = 350, .top_speed = 300});
  put("Express 103", "Station 1", {.length = 500, .top_speed = 420});
}

void Railway::attach_detectors() {
  for_each_block(Section::blocks, [this](Block& block) {
    if (dynamic_cast<Zone*>(&block)) block.set_input(reader_->add_input());
  });
  const auto share = [this](Block& block) {
    if (!block.has_input()) {
      track_.set_length(&block, point_length);
      block.set_input(shared_input(block, {"common", "bottom-right", "top-right"}));
    }
  };
  for_each_block(Section::blocks, share);
  for_each_block(Section::points, share);
}

void Railway::put(const char* lok, const char* block, simulator::TrainOptions options) {
  const auto* driven = dynamic_cast<Lok*>(Layout::get().get_loks().find_child(lok));
  auto* zone = dynamic_cast<Zone*>(Layout::get().get_blocks().find_child(block));
  if (!driven || !zone) return;
  const auto address = driven->get_decoders().front()->get_address();
  options.name = lok;
  options.address = {address.get_addr(), address.is_long()};
  if (!track_.place(track_.add_train(options), zone->right)) return;
  say(options.name + " stands in " + block);
}

// The station's own state says what its decoders are told: asked after each answer.
void Railway::on_station(const simulator::EcosLogEntry& entry) {
  std::cout << simulator::format(entry) << std::endl;
  track_.set_power(station_.track_power());
  for (const auto& train : track_.trains()) {
    const auto address = train->options().address.number;
    const auto known = station_.locomotive(address);
    if (!known) continue;
    const auto id = std::to_string(known->id);
    if (entry.text.starts_with("<REPLY set(" + id + ",stop")) track_.emergency_stop(address);
    const auto step = std::min(known->speed, 126u);
    const bool forwards = known->direction == 0;
    if (step != train->step() || forwards != train->wanted_forwards()) {
      track_.command(address, step, forwards);
    }
  }
}

void Railway::on_track(const TrackEvent& event) {
  const auto& name = event.train->options().name;
  const auto where = event.block ? event.block->get_name().raw() : "";
  switch (event.kind) {
    case TrackEvent::Kind::entered:
      return say(name + " enters " + where);
    case TrackEvent::Kind::turned:
      return say(name + " turns round in " + where);
    case TrackEvent::Kind::ran_off:
      return say(name +
                 (event.point_against ? " stands before a point set against it after "
                                      : " stands at the end of ") +
                 where);
    case TrackEvent::Kind::collision:
      return say(name + " has run into " + event.other->options().name + " in " + where);
    case TrackEvent::Kind::left:
      return;
  }
}

}  // namespace zemblar::demo

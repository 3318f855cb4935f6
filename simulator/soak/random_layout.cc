#include "simulator/soak/random_layout.h"

#include <yaml-cpp/yaml.h>

#include <string>
#include <vector>

#include "core/layout.h"
#include "diagram/view.h"
#include "diagram/view_crossing.h"
#include "diagram/view_label.h"
#include "diagram/view_point.h"
#include "diagram/view_scissor.h"
#include "diagram/view_signal.h"
#include "diagram/view_zone.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"

namespace zemblar::simulator {
namespace {

/// Hardware and scripts, as a file has them.
constexpr auto devices = {
    "!device/Lenz/LI-USB {name: Interface, use-as-default: false}",
    "!device/Tessara/BUS {name: Yard, serial-nr: TB-1, devices: [!device/Tessara/QVRN {name: "
    "North, "
    "address: 9, serial-nr: R-1, inputs: [{name: A}, {name: B}, {name: C}]}]}",
    "!device/Tessara/QVRN {name: South, serial-nr: R-2, inputs: [{name: A}, {name: B}]}"};
constexpr auto scripts = {
    "!script {name: Depart, conditions: [[When, occupied, Any, true], [And, lok-speed, This, eq, "
    "0, "
    "km/h]], commands: [[save], [set-speed, This, 60, km/h], [wait, 1.5], [set-function, This, "
    "Horn, true], [restore]]}",
    "!script {name: Guard, conditions: [[While, lok-speed, Any, gt, 50, '%', travel], [Or, "
    "occupied, "
    "Any, false]], commands: [[get-speed, This, Speed], [set-direction, This, Reverse]]}"};

class Filler {
 public:
  Filler(Chance& chance, bool with_groups) : chance_(chance), with_groups_(with_groups) {}

  void fill() {
    for (const auto* device : devices) Object::create(YAML::Load(device));
    for (const auto* script : scripts) Object::create(YAML::Load(script));
    for (auto count = some(6); count > 0; --count) add_lok();
    view_ = layout_.get_views().add(new View);
    for (auto count = some(6); count > 0; --count) add_zone();
    for (auto count = some(3); count > 0; --count) add_points();
    for (auto count = 4 * ends_.size(); count > 0; --count) join(pick(ends_), pick(ends_));
  }

 private:
  std::size_t some(std::size_t most) { return 1 + chance_.below(most); }
  template <typename T>
  T& pick(std::vector<T>& from) {
    return from[chance_.below(from.size())];
  }
  Vector place() {
    return {static_cast<double>(chance_.below(800)), static_cast<double>(chance_.below(4000)) / 8};
  }

  void add_lok() {
    auto* lok = with_groups_ && chance_.happens(0.5)
                    ? layout_.get_loks().add(new LokGroup)->add(new Lok)
                    : layout_.get_loks().add(new Lok);
    lok->get_decoders().front()->set_address(
        Address(1 + static_cast<unsigned>(chance_.below(9999)), true));
    lok->get_decoders().front()->set_reverse(chance_.happens(0.3));
    if (chance_.happens(0.3)) lok->add_decoder().set_speed_ratio(0.75);
    for (auto count = chance_.below(5); count > 0; --count) lok->add(new Function(lok));
    if (auto* function = lok->child_at(0)) function->set_name("Horn");
  }

  void add_zone() {
    auto* zone = layout_.get_blocks().add(new Zone);
    zone->set_input(random_input());
    zone->set_invert(chance_.happens(0.3));
    auto* picture = new ViewZone(*zone, place());
    if (chance_.happens(0.5)) picture->make_curved(picture->segments()[0]);
    if (chance_.happens(0.3)) picture->add_node(0);
    show(picture, {"left", "right"});
    show(new ViewLabel(*zone, place()), {});
  }

  void add_points() {
    auto& points = layout_.get_points();
    auto* point = points.add(new Point);
    point->get_output(1).set_address(Address(Address::Kind::accessory, 7));
    show(new ViewPoint(*point, place()), {"common", "state:Straight", "state:Curved"});
    show(new ViewSignal(*points.add(new Signal), place()), {});
    const auto corners = {"top-left", "top-right", "bottom-left", "bottom-right"};
    show(new ViewScissor(*points.add(new Scissor), place()), corners);
    show(new ViewCrossing(*layout_.get_blocks().add(new Crossing), place()), corners);
  }

  void show(ViewObj* picture, std::initializer_list<const char*> ends) {
    view_->add_object(picture);
    for (const auto* name : ends) {
      if (auto* end = picture->get_link_node(name)) ends_.push_back(end);
    }
  }

  void join(ViewLinkNode* end, ViewLinkNode* other) {
    if (end->get_object() == other->get_object()) return;
    if (chance_.happens(0.2)) end->set_locked(true);
    end->connect(*other);
  }

  Device* random_input() {
    auto* device = layout_.get_devices().child_at(static_cast<unsigned>(chance_.below(3)));
    if (auto* reader = device->child_at(0); reader && !reader->empty()) device = reader;
    return dynamic_cast<Device*>(device->child_at(static_cast<unsigned>(chance_.below(3))));
  }

  Layout& layout_ = Layout::get();
  Chance& chance_;
  bool with_groups_;
  View* view_ = nullptr;
  std::vector<ViewLinkNode*> ends_;
};

}  // namespace

void fill_at_random(Chance& chance, bool with_groups) {
  Filler(chance, with_groups).fill();
}

}  // namespace zemblar::simulator

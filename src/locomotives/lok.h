#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "core/direction.h"
#include "core/object.h"
#include "locomotives/decoder.h"
#include "locomotives/lok_registry.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

class Block;
class BlockLink;
class Function;

/// One locomotive: its decoders, its functions (children in the tree), and its place on the track.
///
/// Three things decide what the decoders receive: the user's speed, the script overlays, and the
/// `brake` that block control sets. In an emergency stop they get DecoderUpdate::emergency_stop,
/// under the brake 0, otherwise the last overlay's speed or the user's.
///
/// Under the brake a new speed is recorded but neither computed nor sent; releasing the brake sends
/// the speed that was in force before it, and the next change catches up. A brake that falls into
/// an emergency stop replaces it by 0 at the decoders.
///
/// `apply_direction_overlay` leaves the direction in force as it was recorded, so that the next
/// call compares against the older value: a direction that a script has set stays when the script
/// ends, and each further call under a reversing overlay turns the train's place round again.
///
/// Speed, direction, place and attributes are not in a layout file.
class Lok : public Object {
 public:
  Lok();
  explicit Lok(const YAML::Node& node);
  ~Lok() override;
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  /// 0 to 126; asserts "speed <= 126". Lifts an emergency stop, also with 0.
  void set_speed(unsigned speed);
  /// 0 during an emergency stop.
  [[nodiscard]] unsigned get_speed() const;
  void set_emergency_stop(bool on);
  [[nodiscard]] bool get_emergency_stop() const;
  void set_direction(Direction direction);
  [[nodiscard]] Direction get_direction() const { return direction_; }
  void set_brake(bool brake);
  [[nodiscard]] bool get_brake() const { return brake_; }
  void apply_speed_overlay();
  void apply_direction_overlay();
  /// In force after overlays; 0 during an emergency stop.
  [[nodiscard]] unsigned get_speed_overlay() const;
  [[nodiscard]] Direction get_direction_overlay() const { return direction_overlay_; }

  /// The model's top speed in km/h; for display.
  [[nodiscard]] int get_top_speed() const { return top_speed_; }
  void set_top_speed(int top_speed);
  /// As the track reports it, 0 to 126; -1 while unknown.
  [[nodiscard]] int get_actual_speed() const { return actual_speed_; }
  /// From a raw report of 0 to 255.
  void set_actual_speed(unsigned char raw);

  using Decoders = std::vector<Glib::RefPtr<Decoder>>;
  [[nodiscard]] const Decoders& get_decoders() const { return decoders_; }
  Decoder& add_decoder();
  /// The last one stays. Functions of the decoders behind it follow.
  void remove_decoder(unsigned index);
  [[nodiscard]] bool has_address(Address address) const;
  sigc::signal<void>& signal_decoders_changed() { return signal_decoders_changed_; }

  using Attributes = std::map<std::string, std::string>;
  [[nodiscard]] const Attributes& get_attributes() const { return attributes_; }
  void set_attribute(const Glib::ustring& key, const Glib::ustring& value);
  void remove_attribute(const Glib::ustring& key);
  /// The key that was set or removed.
  sigc::signal<void, const Glib::ustring&>& signal_attribute_changed() {
    return signal_attribute_changed_;
  }

  [[nodiscard]] bool can_contain(Object* child) const override;

  /// Place on the track: the outward links of the leading and the trailing block; both null (not
  /// known) or both set. The blocks between them are the locomotive's span, and each of them has it
  /// as its `lok` unless another one was there first.
  BlockLink* front = nullptr;
  BlockLink* back = nullptr;
  /// False while nothing has told which end leads: the two may then be the wrong way round.
  bool orientation_known = false;

  // Block control, defined in track/. It follows the occupancy of the blocks around the
  // locomotive and commands nothing but `brake`; points are taken as they lie, and nothing is
  // reserved. A trigger that arises while a handler is at work waits until that has returned.
  //
  // RailCom's reports move an end block by block to where the locomotive is seen, and claim the
  // blocks on the way. The move stops before a block that any locomotive holds, this one included,
  // and before one that the same move has passed already: the place jumps to the report, and the
  // claims stay. A dead end or a point set against the move stops it too; nothing is claimed then.
  //
  // After a point was thrown under a train, the way can lead round in a circle. The head claims the
  // circle once and stands where it began. Every other walk that comes round has found the span
  // broken: the place is lost, and the blocks that had to be released are released.
  //
  // A block that ends under a locomotive takes it off the track, and so it leaves all blocks that
  // it holds. A locomotive that loses its track otherwise leaves blocks held behind it; the
  // operator frees them by their `lok`.

  /// RailCom sees it between two links of one block, `front_` at the decoder's leading end if
  /// `certain`. Asserts that it is one block.
  void detected(BlockLink* front_, BlockLink* back_, bool certain);
  /// Follows `front` and `back` after they have changed.
  void reconnect();
  /// Whether two links in the order of the decoder's ends run along `front` and `back` (1), against
  /// them (-1), or neither can be told (0).
  [[nodiscard]] int travel_sign(const BlockLink* front_, const BlockLink* back_) const;
  /// The blocks that have this locomotive as their `lok`.
  [[nodiscard]] const std::vector<Block*>& get_blocks() const { return blocks_; }

  Glib::PropertyProxy<int> property_top_speed() { return {this, "top-speed"}; }
  Glib::PropertyProxy<unsigned> property_speed() { return {this, "speed"}; }
  Glib::PropertyProxy<bool> property_emergency_stop() { return {this, "emergency-stop"}; }
  Glib::PropertyProxy<Direction> property_direction() { return {this, "direction"}; }
  Glib::PropertyProxy<bool> property_brake() { return {this, "brake"}; }
  Glib::PropertyProxy_ReadOnly<int> property_actual_speed() { return {this, "actual-speed"}; }
  Glib::PropertyProxy_ReadOnly<unsigned> property_speed_overlay() {
    return {this, "speed-overlay"};
  }
  Glib::PropertyProxy_ReadOnly<Direction> property_direction_overlay() {
    return {this, "direction-overlay"};
  }
  // PropertyProxy notifications cost a look-up by name: hot paths use these.
  sigc::signal<void>& signal_speed_changed() { return signal_speed_changed_; }
  sigc::signal<void>& signal_emergency_stop_changed() { return signal_emergency_stop_changed_; }
  sigc::signal<void>& signal_direction_changed() { return signal_direction_changed_; }
  sigc::signal<void>& signal_direction_overlay_changed() {
    return signal_direction_overlay_changed_;
  }
  sigc::signal<void>& signal_brake_changed() { return signal_brake_changed_; }
  sigc::signal<void>& signal_actual_speed_changed() { return signal_actual_speed_changed_; }
  /// `front`, `back` or `orientation_known` has changed, and block control has done with it.
  sigc::signal<void>& signal_place_changed() { return signal_place_changed_; }
  sigc::signal<void>& signal_top_speed_changed() { return signal_top_speed_changed_; }

 protected:
  void on_deleting() override;

 private:
  struct Place {
    const BlockLink* front = nullptr;
    const BlockLink* back = nullptr;
    bool orientation_known = false;

    bool operator==(const Place&) const = default;
  };

  struct NoDecoder {};
  explicit Lok(NoDecoder tag);

  /// What there is to tell of a change: the property, and its signal where it has one.
  struct Change {
    const char* property;
    sigc::signal<void> Lok::*signal = nullptr;
  };
  /// In that order; a handler may destroy the locomotive.
  void announce(std::initializer_list<Change> changes);

  template <typename Command>
  void send(const Command& command);
  void send_speed(unsigned speed);
  void compute_and_send_speed();
  void turn_round(Direction direction);

  // Block control, defined in track/.
  friend class Block;
  void watch(std::size_t place, sigc::signal<void>& signal, void (Lok::*handler)());
  void on_track_event(void (Lok::*handler)());
  void handle(void (Lok::*handler)());
  void tell_place();
  void on_front_occupied();
  void on_rear_occupied();
  void on_ahead_occupied();
  void on_behind_occupied();
  void on_ahead_route();
  void on_block_ending(Block* block);
  void on_link_ending(const BlockLink* link);
  void place_detected(BlockLink* front_, BlockLink* back_, bool certain);
  void move_to_detected(BlockLink* front_, BlockLink* back_, bool certain);
  template <typename Check>
  bool walk(BlockLink*& end, BlockLink* target, const Check& check);
  [[nodiscard]] Block* find_rear_detector() const;
  [[nodiscard]] bool spans(const Block* block) const;
  bool release_undetected_tail();
  void lose_track();
  void leave_track();
  void reverse_place();
  // Blocks enter themselves and withdraw.
  void remember_block(Block* block);
  void forget_block(const Block* block);

  void adopt(const Glib::RefPtr<Decoder>& decoder);
  void restore_decoders(const YAML::Node& entries);
  void save_attributes(YAML::Emitter& out) const;
  void set_attributes(const Attributes& wanted);

  /// In the order front, rear detector, ahead (occupied, route), behind (occupied, route).
  std::array<ScopedConnection, 6> watches_;
  ScopedConnection block_ending_;
  ScopedConnection link_ending_;
  std::vector<Block*> blocks_;
  Attributes attributes_;
  Decoders decoders_;
  LokRegistry registry_;
  Direction direction_overlay_ = Direction::Forwards;
  unsigned speed_overlay_ = 0;  // DecoderUpdate::emergency_stop during an emergency stop
  int top_speed_ = 100;
  Direction direction_ = Direction::Forwards;
  int actual_speed_ = -1;
  bool brake_ = false;
  unsigned speed_ = 0;  // DecoderUpdate::emergency_stop during an emergency stop
  sigc::signal<void> signal_speed_changed_;
  sigc::signal<void> signal_emergency_stop_changed_;
  sigc::signal<void> signal_direction_changed_;
  sigc::signal<void> signal_direction_overlay_changed_;
  sigc::signal<void> signal_brake_changed_;
  sigc::signal<void> signal_actual_speed_changed_;
  sigc::signal<void> signal_top_speed_changed_;
  sigc::signal<void> signal_place_changed_;
  Place told_place_;
  sigc::signal<void> signal_decoders_changed_;
  sigc::signal<void, const Glib::ustring&> signal_attribute_changed_;
};

}  // namespace zemblar

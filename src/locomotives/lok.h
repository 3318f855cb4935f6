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
/// Three things decide which speed the decoders receive: the user's speed, the script overlays, and
/// the `brake` that block control sets. In an emergency stop it is DecoderUpdate::emergency_stop,
/// under the brake 0, otherwise the newest overlay's speed, or the user's if no overlay has one.
///
/// Under the brake a new speed is recorded, but the speed in force is neither computed nor sent.
/// Releasing the brake sends the speed that was in force before; the next change of speed computes
/// it anew; so does the release of a block that a script had reserved for another locomotive.
/// Braking during an emergency stop sends 0 to the decoders.
///
/// `apply_direction_overlay` does not record the direction in force, so that the next call compares
/// with the older one. So a direction that a script has set stays when the script ends, and each
/// further call under a reversing overlay swaps `front` and `back` again.
///
/// Speed, direction, place and attributes are not in a layout file.
class Lok : public Object {
 public:
  Lok();
  explicit Lok(const YAML::Node& node);
  ~Lok() override;
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  /// 0 to 126; asserts "speed <= 126". Ends an emergency stop, even with 0.
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
  /// The speed in force after overlays; 0 during an emergency stop.
  [[nodiscard]] unsigned get_speed_overlay() const;
  [[nodiscard]] Direction get_direction_overlay() const { return direction_overlay_; }

  /// The locomotive's top speed in km/h, for display.
  [[nodiscard]] int get_top_speed() const { return top_speed_; }
  void set_top_speed(int top_speed);
  /// The speed that RailCom reports, 0 to 126; -1 while unknown.
  [[nodiscard]] int get_actual_speed() const { return actual_speed_; }
  /// Sets it from a raw report of 0 to 255.
  void set_actual_speed(unsigned char raw);

  using Decoders = std::vector<Glib::RefPtr<Decoder>>;
  [[nodiscard]] const Decoders& get_decoders() const { return decoders_; }
  Decoder& add_decoder();
  /// Does nothing when it is the only decoder. Functions of later decoders keep them; functions of
  /// the removed one get the decoder that takes its index, or the last one.
  void remove_decoder(unsigned index);
  [[nodiscard]] bool has_address(Address address) const;
  sigc::signal<void>& signal_decoders_changed() { return signal_decoders_changed_; }

  using Attributes = std::map<std::string, std::string>;
  [[nodiscard]] const Attributes& get_attributes() const { return attributes_; }
  void set_attribute(const Glib::ustring& key, const Glib::ustring& value);
  void remove_attribute(const Glib::ustring& key);
  /// Emitted with the key that was set or removed.
  sigc::signal<void, const Glib::ustring&>& signal_attribute_changed() {
    return signal_attribute_changed_;
  }

  [[nodiscard]] bool can_contain(Object* child) const override;

  /// Place on the track: the outward links of the leading and of the trailing block. Both are set,
  /// or both null when the place is unknown. The blocks between the two links are the locomotive's
  /// span. Each of these has the locomotive as its `lok`, unless another locomotive held the block
  /// first.
  BlockLink* front = nullptr;
  BlockLink* back = nullptr;
  /// False while it is unknown which end leads; `front` and `back` may then be swapped.
  bool orientation_known = false;

  // Block control, defined in track/. It follows the occupancy of the blocks around the locomotive
  // and commands only `brake`. It neither throws points nor reserves blocks; before a block that a
  // script has reserved for another locomotive it brakes. A trigger that arises while a handler
  // runs waits until the handler has returned.
  //
  // A RailCom report moves an end of the span, block by block, to the reported block, and claims
  // the blocks on the way. The move stops before a block that any locomotive holds, this one
  // included, and before a block that the same move has passed already; then the place jumps to the
  // reported block, and the claims stay. A dead end or a point set against the move stops it as
  // well; then nothing is claimed.
  //
  // When a point is thrown under a train, the route can become a circle. The front claims the
  // circle once and ends where it began. Any other walk that comes round in a circle proves that
  // the span is broken: the place is lost, and the blocks that were to be released are released.
  //
  // When a block under a locomotive ends, the locomotive is taken off the track and releases all
  // its blocks. A locomotive that loses its place otherwise still holds blocks; the operator frees
  // these through the block's `lok`.

  /// RailCom reports the locomotive in a block, between its links `front_` and `back_`. If
  /// `certain`, `front_` is at the decoder's leading end. Asserts that both links are of one block.
  void detected(BlockLink* front_, BlockLink* back_, bool certain);
  /// Call after changing `front` or `back`: watches the blocks around the new place.
  void reconnect();
  /// 1 if two links, in the order of the decoder's ends, run in the direction from `back` to
  /// `front`, -1 if in the opposite one, 0 if unknown.
  [[nodiscard]] int travel_sign(const BlockLink* front_, const BlockLink* back_) const;
  /// True if the block is in the span.
  [[nodiscard]] bool spans(const Block* block) const;
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
  // Faster than the notifications of a PropertyProxy, which need a look-up by name.
  sigc::signal<void>& signal_speed_changed() { return signal_speed_changed_; }
  sigc::signal<void>& signal_emergency_stop_changed() { return signal_emergency_stop_changed_; }
  sigc::signal<void>& signal_direction_changed() { return signal_direction_changed_; }
  sigc::signal<void>& signal_direction_overlay_changed() {
    return signal_direction_overlay_changed_;
  }
  sigc::signal<void>& signal_brake_changed() { return signal_brake_changed_; }
  sigc::signal<void>& signal_actual_speed_changed() { return signal_actual_speed_changed_; }
  /// `front`, `back` or `orientation_known` has changed, and block control has finished.
  sigc::signal<void>& signal_place_changed() { return signal_place_changed_; }
  /// A locomotive may do something else now: its speed in force, its brake, its emergency stop or
  /// its place has changed, and the decoders have their new commands.
  static sigc::signal<void, Lok&>& signal_condition_changed();
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

  /// How a change is announced: the property, and its signal if it has one.
  struct Change {
    const char* property;
    sigc::signal<void> Lok::*signal = nullptr;
  };
  /// Notifies in the given order; a handler may destroy the locomotive.
  void announce(std::initializer_list<Change> changes);

  template <typename Command>
  void send(const Command& command);
  void send_speed(unsigned speed);
  void compute_and_send_speed();
  void renew_speed();
  void turn_round(Direction direction);

  // Block control, defined in track/.
  friend class Block;
  friend class ReservationQueue;
  void watch(std::size_t place, sigc::signal<void>& signal, void (Lok::*handler)());
  void on_track_event(void (Lok::*handler)());
  void handle(void (Lok::*handler)());
  void notify_place();
  void on_front_occupied();
  void on_rear_occupied();
  void on_ahead_occupied();
  void on_behind_occupied();
  void on_ahead_route();
  void on_ahead_reserved();
  [[nodiscard]] bool must_wait() const;
  void heed_reservation();
  [[nodiscard]] bool is_in_the_way(const Block* next) const;
  void on_block_ending(Block* block);
  void on_link_ending(const BlockLink* link);
  void place_detected(BlockLink* front_, BlockLink* back_, bool certain);
  void move_to_detected(BlockLink* front_, BlockLink* back_, bool certain);
  template <typename Check>
  bool walk(BlockLink*& end, BlockLink* target, const Check& check);
  [[nodiscard]] Block* find_rear_detector() const;
  bool release_undetected_tail();
  void lose_track();
  void leave_track();
  void reverse_place();
  // Called by blocks when their `lok` changes.
  void remember_block(Block* block);
  void forget_block(const Block* block);

  void adopt(const Glib::RefPtr<Decoder>& decoder);
  void restore_decoders(const YAML::Node& entries);
  void save_attributes(YAML::Emitter& out) const;
  void set_attributes(const Attributes& wanted);

  /// Signals of the watched blocks, in the order front, rear detector, ahead (occupied, route),
  /// behind (occupied, route), ahead (reserved).
  std::array<ScopedConnection, 7> watches_;
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
  Place notified_place_;
  sigc::signal<void> signal_decoders_changed_;
  sigc::signal<void, const Glib::ustring&> signal_attribute_changed_;
};

}  // namespace zemblar

#pragma once

#include <cstdint>
#include <map>

#include "core/object.h"
#include "track/point_output.h"

namespace zemblar {

class PointBase;

/// What one output does in one state; which of the values counts is a matter of the output's type.
struct PointStateOutput {
  static constexpr std::uint8_t max_extended = 63;

  std::uint8_t basic = 0;     ///< which coil: 0 left, 1 right
  float servo = 0;            ///< the angle in degrees
  std::uint8_t extended = 0;  ///< the aspect, 0 to 63
  bool function = false;
  /// Whether the output matters in this state. The panel shows it; it is commanded all the same.
  bool enabled = true;

  bool operator==(const PointStateOutput&) const = default;

  /// The settings of the two ends that a new point is made with.
  static PointStateOutput off() { return {.basic = 0, .servo = -90}; }
  static PointStateOutput on() {
    return {.basic = 1, .servo = 90, .extended = 1, .function = true};
  }
};

/// One way in which a point lies, or one picture of a signal: a child of its point.
///
/// In a layout file an untagged mapping with `name`, `id` and `outputs`, a sequence that runs
/// parallel to the point's outputs. Each entry has `enabled`, and `basic` ("Left" or "Right"),
/// `extended`, `function` or `servo` as the output's type asks for. More entries than the point
/// has outputs are passed over.
class PointState : public Object {
 public:
  explicit PointState(PointBase* owner);
  /// The owner has its outputs already. Throws YAML::InvalidScalar when there are fewer entries
  /// than outputs, and for values that an entry cannot have.
  PointState(PointBase* owner, const YAML::Node& node);
  void save(YAML::Emitter& out) const override;

  void restore(const EntryChange& change) override;

  [[nodiscard]] PointBase* get_owner() const { return owner_; }
  /// Makes it the current state of its point.
  void activate();
  /// Commands all outputs, in their order. Waits for no device.
  void send();

  /// That of an output of the owner; made with its defaults when there is none yet.
  [[nodiscard]] const PointStateOutput& get_setting(const PointOutput& output);
  /// Only stored: it is sent when the state is taken the next time.
  void set_setting(const PointOutput& output, const PointStateOutput& setting);
  /// The output has left the point.
  void forget(const PointOutput& output) { settings_.erase(&output); }

  [[nodiscard]] bool get_deletable() const override { return deletable_; }
  void set_deletable(bool deletable);

  sigc::signal<void>& signal_setting_changed() { return signal_setting_changed_; }

 protected:
  /// Writes what all states have, inside a mapping.
  void save_state(YAML::Emitter& out) const;

 private:
  [[nodiscard]] PointStateOutput setting_of(const PointOutput& output) const;

  PointBase* owner_;
  std::map<const PointOutput*, PointStateOutput> settings_;
  bool deletable_ = true;
  sigc::signal<void> signal_setting_changed_;
};

}  // namespace zemblar

#pragma once

#include <cstdint>
#include <map>

#include "core/object.h"
#include "track/point_output.h"

namespace zemblar {

class PointBase;

/// The setting of one output in one state. The type of the output selects which value is used.
struct PointStateOutput {
  static constexpr std::uint8_t max_extended = 63;

  std::uint8_t basic = 0;     ///< which coil: 0 left, 1 right
  float servo = 0;            ///< the angle in degrees
  std::uint8_t extended = 0;  ///< the aspect, 0 to 63
  bool function = false;
  /// Whether the output matters in this state. Only the panel shows it; the output is commanded
  /// even if false.
  bool enabled = true;

  bool operator==(const PointStateOutput&) const = default;

  /// The settings of the two states of a new point.
  static PointStateOutput off() { return {.basic = 0, .servo = -90}; }
  static PointStateOutput on() {
    return {.basic = 1, .servo = 90, .extended = 1, .function = true};
  }
};

/// One state of a point, or one aspect of a signal: a child of its point.
///
/// In a layout file an untagged mapping with `name`, `id` and `outputs`, a sequence with one entry
/// per output of the point. Each entry has `enabled`, and by the output's type `basic` ("Left" or
/// "Right"), `extended`, `function` or `servo`. Further entries are ignored.
class PointState : public Object {
 public:
  explicit PointState(PointBase* owner);
  /// The owner must have its outputs already. Throws YAML::InvalidScalar when there are fewer
  /// entries than outputs, and for values that an entry cannot have.
  PointState(PointBase* owner, const YAML::Node& node);
  void save(YAML::Emitter& out) const override;

  void restore(const EntryChange& change) override;

  [[nodiscard]] PointBase* get_owner() const { return owner_; }
  /// Makes this the current state of its point.
  void activate();
  /// Commands all outputs in order, without waiting for a device.
  void send();

  /// The setting of an output of the owner; a missing one is added with default values.
  [[nodiscard]] const PointStateOutput& get_setting(const PointOutput& output);
  /// Stores the setting. It is sent when the state becomes current the next time.
  void set_setting(const PointOutput& output, const PointStateOutput& setting);
  /// Removes the setting of an output that has been removed from the point.
  void forget(const PointOutput& output) { settings_.erase(&output); }

  [[nodiscard]] bool get_deletable() const override { return deletable_; }
  void set_deletable(bool deletable);

  sigc::signal<void>& signal_setting_changed() { return signal_setting_changed_; }

 protected:
  /// Writes the keys that all states have, inside a mapping.
  void save_state(YAML::Emitter& out) const;

 private:
  [[nodiscard]] PointStateOutput setting_of(const PointOutput& output) const;

  PointBase* owner_;
  std::map<const PointOutput*, PointStateOutput> settings_;
  bool deletable_ = true;
  sigc::signal<void> signal_setting_changed_;
};

}  // namespace zemblar

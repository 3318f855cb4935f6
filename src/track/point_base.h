#pragma once

#include <vector>

#include "track/block.h"
#include "track/point_state.h"

namespace zemblar {

/// The base of points, signals and scissor points: accessory outputs, and states (children in the
/// tree), one of which is current. A state has the settings that are sent to the outputs.
///
/// A state becomes current at once, even if a train is on the point or no device is in service;
/// nothing waits for the hardware. Block control learns of the new route by `signal_route`. A
/// layout file does not have the current state: after reading, the first state is current and
/// nothing has been sent. Only a point that was read without states has no current state.
///
/// The keys in a layout file are `name`, `id`, `outputs` and `states`.
class PointBase : public Block {
 public:
  using Outputs = std::vector<Glib::RefPtr<PointOutput>>;

  [[nodiscard]] PointState* get_state() const { return state_; }
  /// Does nothing for the current state, and for a state of another point.
  void set_state(PointState* state);
  /// All states in order, without those that are about to end.
  [[nodiscard]] std::vector<PointState*> states() const;
  /// Adds a state with a default name and default settings.
  PointState& add_state();
  /// True if no states can be added or removed.
  [[nodiscard]] virtual bool has_fixed_states() const { return false; }

  [[nodiscard]] const Outputs& get_outputs() const { return outputs; }
  /// `index` counts from 1.
  [[nodiscard]] PointOutput& get_output(unsigned index) const;
  PointOutput& add_output();
  void remove_output(unsigned index);

  void restore(const EntryChange& change) override;
  BlockLink* next_link(BlockLink* in) override;
  [[nodiscard]] BlockLink* get_link(const std::string& name) override;
  [[nodiscard]] std::string get_link_name(const BlockLink* link) const override;

  Glib::PropertyProxy<PointState*> property_state() { return {this, "state"}; }

  /// The same as the property's notification, without its cost.
  sigc::signal<void>& signal_state_changed() { return signal_state_changed_; }
  sigc::signal<void>& signal_outputs_changed() { return signal_outputs_changed_; }

 protected:
  explicit PointBase(const Glib::ustring& name_format);

  [[nodiscard]] virtual PointState* make_state() = 0;
  [[nodiscard]] virtual PointState* make_state(const YAML::Node& node) = 0;
  /// Prepares a state before its first use; does nothing when called again.
  virtual void adopt(PointState* state);
  /// A state is about to end, perhaps together with its point.
  virtual void on_state_ending(PointState* /*state*/) {}
  /// All handlers of the state's end have run.
  virtual void on_state_removed(PointState* /*state*/) {}

  /// Adds a state of a new point; `settings` are those of the outputs, in order.
  PointState* add_state(const Glib::ustring& name, const std::vector<PointStateOutput>& settings);
  /// Makes the first state current without sending anything.
  void begin_with_first_state();
  /// Replaces the outputs and reads the states. The point must have no states yet.
  void load_point(const YAML::Node& node);
  /// Writes the keys that all points have.
  void save_point(YAML::Emitter& out) const;

  void on_child_added(Object* child) override;
  void on_child_removing(Object* child) override;

 private:
  void make_current(PointState* state);
  void replace_ended(PointState* state);
  void restore_outputs(const YAML::Node& entries);
  void restore_states(const YAML::Node& from, const YAML::Node& to);
  void update_deletable();
  const Glib::RefPtr<PointOutput>& own(const Glib::RefPtr<PointOutput>& output);

  Outputs outputs;
  PointState* state_ = nullptr;
  sigc::signal<void> signal_state_changed_;
  sigc::signal<void> signal_outputs_changed_;
};

}  // namespace zemblar

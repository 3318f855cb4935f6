#pragma once

#include <vector>

#include "track/block.h"
#include "track/point_state.h"

namespace zemblar {

/// What points, signals and scissor points share: accessory outputs, and states (children in the
/// tree) that say what is sent to them, one of which is current.
///
/// A state is taken at once, with no regard to a train on the point and to whether a device is in
/// service, and nobody waits for the hardware. A locomotive in the way hears of it by the route
/// signal. The current state is not in a layout file: when it has been read, the first state is
/// current and nothing has been sent. Only a point that was read without states has none.
///
/// The keys in a layout file are `name`, `id`, `outputs` and `states`.
class PointBase : public Block {
 public:
  using Outputs = std::vector<Glib::RefPtr<PointOutput>>;

  [[nodiscard]] PointState* get_state() const { return state_; }
  /// Does nothing for the current state, and for what is no state of this point.
  void set_state(PointState* state);
  /// In their order; those that are about to end are left out.
  [[nodiscard]] std::vector<PointState*> states() const;
  /// Adds one with a default name, that is sent nothing special.
  PointState& add_state();
  /// Whether states can be added.
  [[nodiscard]] virtual bool has_fixed_states() const { return false; }

  [[nodiscard]] const Outputs& get_outputs() const { return outputs; }
  /// Counted from 1.
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
  /// For each state before it is used: nothing the second time.
  virtual void adopt(PointState* state);
  /// A state is about to end; its point may be too.
  virtual void on_state_ending(PointState* /*state*/) {}
  /// Everybody has let go of it.
  virtual void on_state_removed(PointState* /*state*/) {}

  /// Adds a state as a new document has it: all outputs get these settings.
  PointState* add_state(const Glib::ustring& name, const std::vector<PointStateOutput>& settings);
  /// Makes the first state the current one; nothing is sent.
  void begin_with_first_state();
  /// Replaces the outputs and reads the states. Asks for states without any from before.
  void load_point(const YAML::Node& node);
  /// Writes the keys that all points have.
  void save_point(YAML::Emitter& out) const;

  void on_child_added(Object* child) override;
  void on_child_removing(Object* child) override;

 private:
  void take_state(PointState* state);
  void leave_state(PointState* state);
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

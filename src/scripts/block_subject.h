#pragma once

#include "scripts/object_subject.h"
#include "track/block.h"

namespace zemblar {

struct ScriptContext;

/// The block that a command is about: one that its line names, or "This Block", the block of the
/// run.
///
/// In a layout file the block's number, `This`, or null.
class BlockSubject : public sigc::trackable {
 public:
  [[nodiscard]] Block* get_block() const { return block_.get(); }
  [[nodiscard]] bool is_this() const { return is_this_; }
  void set_block(Block* block);
  void set_this();
  /// The block that a run means; null without one, and for one that is ending.
  [[nodiscard]] Block* target(const ScriptContext& context) const;
  [[nodiscard]] Glib::ustring text() const;

  void save(YAML::Emitter& out) const;
  /// Reads one element of the entry. `signal_changed` tells when the reference is resolved.
  void load(const YAML::Node& entry, unsigned place);

  /// The block is ending, and is about to be cleared.
  sigc::signal<void>& signal_changing() { return block_.signal_changing(); }
  /// The block has been cleared, or the reference has been resolved.
  sigc::signal<void>& signal_changed() { return block_.signal_changed(); }

 private:
  ObjectSubject<Block> block_;
  bool is_this_ = true;
};

}  // namespace zemblar

#pragma once

#include "core/object_holder.h"
#include "track/block.h"

namespace zemblar {

/// An observable pointer to a block; see ObjectHolder.
class BlockHolder : public ObjectHolder<Block> {
 public:
  BlockHolder() : Glib::ObjectBase("BlockHolder"), ObjectHolder("block", "no-blocks") {}

  [[nodiscard]] Block* get_block() const { return get_held(); }
  void set_block(Block* block) { hold(block); }
  [[nodiscard]] bool get_no_blocks() const { return get_none(); }

  Glib::PropertyProxy<Block*> property_block() { return {this, "block"}; }
  Glib::PropertyProxy_ReadOnly<bool> property_no_blocks() { return {this, "no-blocks"}; }
};

}  // namespace zemblar

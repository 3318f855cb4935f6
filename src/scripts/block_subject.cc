#include "scripts/block_subject.h"

#include "core/i18n.h"
#include "core/layout.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"

namespace zemblar {
namespace {

constexpr auto this_word = "This";

}  // namespace

void BlockSubject::set_block(Block* block) {
  is_this_ = false;
  block_.set(block);
}

void BlockSubject::set_this() {
  is_this_ = true;
  block_.set(nullptr);
}

Block* BlockSubject::target(const ScriptContext& context) const {
  auto* block = is_this_ ? context.block() : block_.get();
  return block && !block->is_deleting() ? block : nullptr;
}

Glib::ustring BlockSubject::text() const {
  if (is_this_) return _("This Block");
  return block_.get() ? block_.get()->get_name() : _("(No Block Selected)");
}

void BlockSubject::save(YAML::Emitter& out) const {
  if (is_this_) {
    out << this_word;
  } else {
    out << static_cast<const Object*>(block_.get());
  }
}

void BlockSubject::load(const YAML::Node& entry, unsigned place) {
  const auto node = element(entry, place);
  is_this_ = is_word(node, this_word);
  if (is_this_) return;
  block_.read(node);
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        block_.take_read();
        block_.signal_changed().emit();
        return true;
      },
      *this));
}

}  // namespace zemblar

#include "ui/panels/lok_place.h"

#include "core/collections.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "locomotives/lok.h"
#include "track/block.h"

namespace zemblar {
namespace {

Glib::ustring names_of(const std::vector<Block*>& blocks) {
  Glib::ustring names;
  for (const auto* block : blocks) {
    if (!names.empty()) names += ", ";
    names += block->get_name();
  }
  return names.empty() ? Glib::ustring(_("(None)")) : names;
}

/// The text about the block beyond an end of the locomotive's span, and why it is not free.
Glib::ustring beyond(const Lok& lok, const BlockLink* end) {
  if (!end) return "–";
  const auto* partner = end->get_partner();
  if (!partner) return _("End of track");
  const auto* block = partner->get_block();
  const auto* holder = block->get_lok();
  if (holder && holder != &lok) {
    return Glib::ustring::compose(_("%1, held by %2"), block->get_name(), holder->get_name());
  }
  return block->occupied() ? Glib::ustring::compose(_("%1, occupied"), block->get_name())
                           : block->get_name();
}

}  // namespace

LokPlace::LokPlace(Lok& lok) : lok_(&lok) {
  for (auto* label : {&blocks_, &ahead_, &behind_}) {
    label->set_alignment(0, 0.5);
    label->set_ellipsize(Pango::ELLIPSIZE_END);  // so that a long text does not widen the panel
  }
  auto& layout = Layout::get();
  const auto follow = sigc::mem_fun(*this, &LokPlace::follow);
  changes_ = {layout.get_all_blocks().signal_lok_changed().connect(follow),
              layout.get_all_blocks().signal_changed().connect(follow),
              layout.get_all_points().signal_changed().connect(follow),
              lok.signal_direction_overlay_changed().connect(follow)};
  this->follow();
}

void LokPlace::add_to(Form& form) {
  form.add_row(_("Blocks:"), blocks_);
  form.add_row(_("Ahead:"), ahead_);
  form.add_row(_("Behind:"), behind_);
}

void LokPlace::follow() {
  if (!lok_) return;
  const auto show = [](Gtk::Label& label, const Glib::ustring& text) {
    if (label.get_text().raw() == text.raw()) return;
    label.set_text(text);
    label.set_tooltip_text(text);
  };
  show(blocks_, names_of(lok_->get_blocks()));
  show(ahead_, beyond(*lok_.get(), lok_->front));
  show(behind_, beyond(*lok_.get(), lok_->back));
}

}  // namespace zemblar

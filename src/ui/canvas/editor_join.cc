// Joining ends of track in the track editor, by the pointer and by keys.

#include <atkmm/object.h>

#include <cmath>

#include "core/i18n.h"
#include "core/status.h"
#include "diagram/view_track.h"
#include "ui/canvas/editor_view.h"

namespace zemblar {
namespace {

constexpr double half_mark = 13;  // pixels

ViewLinkNode* end_of(const ViewTag* tag) {
  const auto* part = dynamic_cast<const ViewLinkNode::Tag*>(tag);
  if (!part || part->part != ViewNode::body) return nullptr;
  return dynamic_cast<ViewLinkNode*>(part->node);
}

Glib::ustring name_of(const ViewLinkNode& end) {
  const auto* shown = end.get_object()->get_object();
  return shown ? shown->get_name() : "";
}

/// The name of the block or object joined to an end; empty for a free end.
Glib::ustring partner_name(const ViewLinkNode& end) {
  const auto* link = end.get_block_link();
  if (link && link->is_connected()) return link->get_partner()->get_block()->get_name();
  return end.get_link() ? name_of(*end.get_link()) : "";
}

Glib::ustring taken_text(const ViewLinkNode& end) {
  return Glib::ustring::compose(_("Nothing was joined: the end of “%1” is joined to “%2” already. "
                                  "Disconnect it first (right button)."),
                                name_of(end), partner_name(end));
}

/// The message why `end` cannot be joined to `other`, which is null if there is no end.
Glib::ustring why_not(const ViewLinkNode& end, const ViewLinkNode* other) {
  const Glib::ustring none =
      _("Nothing was joined: no end of another piece is there. A mark shows one that is met.");
  if (!other) return none;
  if (other->get_object() == end.get_object()) {
    return Glib::ustring::compose(_("Nothing was joined: both ends belong to “%1”."), name_of(end));
  }
  if (end.get_block_link() == other->get_block_link()) {
    return Glib::ustring::compose(
        _("Nothing was joined: both are pictures of the same end of “%1”."), name_of(end));
  }
  const bool is_taken = !partner_name(end).empty();
  if (!is_taken && partner_name(*other).empty()) return none;
  return taken_text(is_taken ? end : *other);
}

std::vector<ViewLinkNode*> ends_of(ViewObj& object) {
  auto* track = dynamic_cast<ViewTrack*>(&object);
  return track ? track->ends() : std::vector<ViewLinkNode*>{};
}

void draw_diamond(const Cairo::RefPtr<Cairo::Context>& context, const Vector& place, double half) {
  context->begin_new_path();
  for (const auto& corner :
       {Vector{0, -half}, Vector{half, 0}, Vector{0, half}, Vector{-half, 0}}) {
    context->line_to(place.x + corner.x, place.y + corner.y);
  }
  context->close_path();
}

}  // namespace

// --- By the pointer ---

ViewLinkNode* EditorView::dragged_end() const {
  return mode_ == Mode::dragging ? end_of(tag_.get()) : nullptr;
}

void EditorView::aim(const Vector& pointer, bool joins) {
  pointer_ = pointer;
  joins_ = joins;
  if (dragged_end()) queue_draw();
}

// The end at the pointer, or at the place of the dragged end, which may differ because of the grid.
ViewLinkNode* EditorView::target_at(const Vector& pointer) {
  auto* end = dragged_end();
  if (!end) return nullptr;
  if (auto* met = end_of(hit_about(pointer).get())) return met;
  return end_of(hit_about(to_canvas(end->pos)).get());
}

// Marks the target with a diamond, a shape that no other mark has.
void EditorView::draw_over(const Context& context) {
  const auto* target = joins_ ? target_at(pointer_) : nullptr;
  if (!target) return;
  draw_diamond(context, target->pos, half_mark / get_zoom());
  context->set_line_join(Cairo::LINE_JOIN_MITER);
  context->set_source_rgb(1, 1, 1);
  context->set_line_width(5 / get_zoom());
  context->stroke_preserve();
  context->set_source_rgb(0, 0, 0);
  context->set_line_width(2 / get_zoom());
  context->stroke();
}

// An end near the pointer, except the dragged one and its joined partner, which moves with it.
ViewLinkNode* EditorView::end_near(const Vector& pointer) const {
  const auto place = to_view(pointer);
  const auto* dragged = dragged_end();
  const double reach = std::max(ViewNode::reach, node_reach / get_zoom());
  for (const auto& object : get_view().get_objects()) {
    for (auto* end : ends_of(*object.operator->())) {
      const bool moves = end == dragged || (dragged && end == dragged->get_link());
      const bool met = (end->pos - place).length() <= reach ||
                       (dragged && (end->pos - dragged->pos).length() <= reach);
      if (!moves && met) return end;
    }
  }
  return nullptr;
}

void EditorView::join_at(const Vector& pointer) {
  update();
  auto* end = dragged_end();
  if (!end) {
    if (!tag_ || ends_of(*tag_->object).empty()) return;
    return refuse(_("Nothing was joined: drag an end, which is a round mark, not the piece."));
  }
  if (auto* target = target_at(pointer)) return join(*end, *target);
  const auto* met = end_near(pointer);
  refuse(why_not(*end, met));
  // Moves the end back, because two ends at the same place look joined.
  if (met) tag_->object->drag_move(*tag_, came_from_);
}

void EditorView::join(ViewLinkNode& end, ViewLinkNode& target) {
  EditJournal::get().describe(_("Join “%1”"));
  end.connect(target);
  if (!refusal_.empty() && get_status() == refusal_) clear_status();
}

void EditorView::refuse(const Glib::ustring& reason) {
  refusal_ = reason;
  set_status(reason);
}

// --- By keys ---

// Joins the chosen end with the nearest free end of another object.
void EditorView::join_nearest() {
  const auto part = current_part();
  auto* end = end_of(part.get());
  if (!end) return refuse(_("Nothing was joined: choose an end first, with Space."));
  if (end->get_link()) return refuse(taken_text(*end));
  ViewLinkNode* nearest = nullptr;
  for (const auto& object : get_view().get_objects()) {
    if (object.operator->() == selected_) continue;
    for (auto* met : ends_of(*object.operator->())) {
      if (!end->can_connect(*met)) continue;
      const auto distance = [&](const ViewNode& to) { return (to.pos - end->pos).length(); };
      if (!nearest || distance(*met) < distance(*nearest)) nearest = met;
    }
  }
  if (nearest) {
    const auto message =
        Glib::ustring::compose(_("Joined “%1” with “%2”."), name_of(*end), name_of(*nearest));
    join(*end, *nearest);
    describe();
    return set_status(message);
  }
  if (!partner_name(*end).empty()) return refuse(taken_text(*end));
  refuse(_("Nothing was joined: no other piece of this view has a free end."));
}

// --- For screen readers ---

Glib::ustring EditorView::description_of(const ViewTag& part) const {
  const auto* node = dynamic_cast<const ViewNode::Tag*>(&part);
  if (!node) return _("stretch of track");
  if (node->part != ViewNode::body) return _("handle");
  const auto* end = dynamic_cast<const ViewLinkNode*>(node->node);
  if (!end) return _("node");
  const auto partner = partner_name(*end);
  if (partner.empty()) return _("free end");
  return Glib::ustring::compose(_("end joined with “%1”"), partner);
}

// Sets the accessible description: the selected object, the part that keys act on, and its place.
void EditorView::describe() {
  Glib::ustring text;
  if (selected_) {
    const auto* shown = selected_->get_object();
    text = shown ? shown->get_name() : Glib::ustring(_("(None)"));
    const auto part = part_ ? current_part() : Tag{};
    if (part) text += ", " + description_of(*part);
    const auto* node = dynamic_cast<const ViewNode::Tag*>(part.get());
    const auto place = node ? node->node->pos : selected_->anchor();
    text += Glib::ustring::compose(" (%1, %2)", std::lround(place.x), std::lround(place.y));
  }
  if (text.raw() != get_accessible()->get_description()) get_accessible()->set_description(text);
}

}  // namespace zemblar

// The grid of the track editor's canvas.

#include <cmath>

#include "core/global_options.h"
#include "core/i18n.h"
#include "core/status.h"
#include "ui/canvas/editor_view.h"

namespace zemblar {
namespace {

/// Step of the arrow keys without a grid, in diagram units.
constexpr double coarse = 8;

/// The step of the grid; 0 for no grid, or while Alt is held.
double grid_step(unsigned state) {
  return (state & GDK_MOD1_MASK) != 0 ? 0 : GlobalOptions::get().get_grid();
}

double next_multiple(double value, double way, double step) {
  // A value that is nearly on a grid line goes to the following line.
  constexpr double near = 1e-6;
  if (way == 0) return value;
  return way > 0 ? (std::floor(value / step + near) + 1) * step
                 : (std::ceil(value / step - near) - 1) * step;
}

}  // namespace

// --- By the pointer ---

// An object snaps with its anchor, the place of its first end; a node or a handle snaps itself.
void EditorView::drag_to(const Vector& pointer, unsigned state) {
  if (!tag_) return;
  auto& object = *tag_->object;
  const auto place = to_view(pointer);
  const auto step = grid_step(state);
  const auto* part = dynamic_cast<const ViewNode::Tag*>(tag_.get());
  if (!part) return object.drag_move(*tag_, on_grid(place - grip_, step) + grip_);
  object.drag_move(*tag_, on_grid(place, step));
  // A handle that is not horizontal or vertical gets an arbitrary length, which is rounded.
  auto& node = *part->node;
  if (part->part == ViewNode::left_handle) node.set_left_handle(on_grid({node.left, 0}, 0).x);
  if (part->part == ViewNode::right_handle) node.set_right_handle(on_grid({node.right, 0}, 0).x);
}

// The middle of a new object follows the pointer; its anchor snaps to the grid.
void EditorView::place_at(const Vector& pointer, unsigned state) {
  if (!placed_) return;
  const auto place = to_view(pointer);
  placed_->drag_right(place);
  const auto anchor = placed_->anchor();
  const auto grid = on_grid(anchor, grid_step(state));
  if (grid != anchor) placed_->drag_right(place + grid - anchor);
}

// --- By keys ---

Vector EditorView::next_line(const Vector& from, const Vector& way) {
  const double step = GlobalOptions::get().get_grid();
  if (step == 0) return from + way * coarse;
  return {next_multiple(from.x, way.x, step), next_multiple(from.y, way.y, step)};
}

void EditorView::align() {
  if (!selected_) return set_status(_("Nothing is selected: click a piece first, then align it."));
  const double chosen = GlobalOptions::get().get_grid();
  const double step = chosen > 0 ? chosen : GlobalOptions::usual_grid;
  const auto current = part_ ? current_part() : Tag{};
  const auto* part = dynamic_cast<const ViewNode::Tag*>(current.get());
  EditJournal::get().describe(_("Align “%1”"));
  if (!part) return selected_->align(step);
  part->node->drag(ViewNode::body, on_grid(part->node->pos, step));
}

}  // namespace zemblar

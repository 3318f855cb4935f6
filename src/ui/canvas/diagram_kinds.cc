#include "ui/canvas/diagram_kinds.h"

#include <array>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/toplevel.h"
#include "diagram/view_crossing.h"
#include "diagram/view_label.h"
#include "diagram/view_point.h"
#include "diagram/view_scissor.h"
#include "diagram/view_signal.h"
#include "diagram/view_zone.h"

namespace zemblar {
namespace {

struct Kind {
  Object& (*make)();
  ViewObj* (*draw)(Object& object);
  bool (*shows)(const Object& object);
  Section section;
  const char* heading;
};

template <typename Shown, typename Drawn>
constexpr Kind kind_of(Section section, const char* heading) {
  return {nullptr,
          [](Object& object) -> ViewObj* { return new Drawn(dynamic_cast<Shown&>(object), {}); },
          [](const Object& object) { return dynamic_cast<const Shown*>(&object) != nullptr; },
          section, heading};
}

template <typename Shown>
Object& make_point() {
  return *Layout::get().get_points().add(new Shown);
}
template <typename Shown>
Object& make_block() {
  return *Layout::get().get_blocks().add(new Shown);
}

constexpr Kind with_make(Kind kind, Object& (*make)()) {
  kind.make = make;
  return kind;
}

/// Indexed by DiagramKind.
constexpr std::array<Kind, 6> kinds = {
    with_make(kind_of<Point, ViewPoint>(Section::points, N_("Points")), make_point<Point>),
    with_make(kind_of<Zone, ViewZone>(Section::blocks, N_("Zones")), make_block<Zone>),
    with_make(kind_of<Crossing, ViewCrossing>(Section::blocks, N_("Crossings")),
              make_block<Crossing>),
    with_make(kind_of<Scissor, ViewScissor>(Section::points, N_("Scissor Points")),
              make_point<Scissor>),
    with_make(kind_of<Signal, ViewSignal>(Section::points, N_("Signals")), make_point<Signal>),
    with_make(kind_of<Zone, ViewLabel>(Section::blocks, N_("Zones")), make_block<Zone>)};

const Kind& kind_of(DiagramKind kind) {
  return kinds.at(static_cast<std::size_t>(kind));
}

}  // namespace

Object& make_object(DiagramKind kind) {
  return kind_of(kind).make();
}

ViewObj* draw_object(DiagramKind kind, Object& object) {
  return kind_of(kind).draw(object);
}

ObjectChoices choices_for(DiagramKind kind) {
  const auto& shown = kind_of(kind);
  return {.heading = _(shown.heading),
          .none = {},
          .how_to_make = kind == DiagramKind::label
                             ? _("There is no zone yet. Draw one first, with the tool Zone.")
                             : _("There is none yet. The tool itself makes a new one."),
          .container = [&shown]() -> Object& { return Layout::get().get_toplevel(shown.section); },
          .offers = [&shown](const Object& object) { return shown.shows(object); }};
}

}  // namespace zemblar

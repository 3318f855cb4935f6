#include "diagram/anchor.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "core/i18n.h"
#include "core/yaml_io.h"

namespace zemblar {
namespace {

struct Side {
  const char* name;
  double x;  // as a fraction of the width
  double y;  // as a fraction of the height
};
constexpr std::array<Side, anchor_count> sides = {{{N_("Top"), 0.5, 0},
                                                   {N_("Left"), 0, 0.5},
                                                   {N_("Right"), 1, 0.5},
                                                   {N_("Bottom"), 0.5, 1},
                                                   {N_("Centre"), 0.5, 0.5},
                                                   {N_("Top Left"), 0, 0},
                                                   {N_("Top Right"), 1, 0},
                                                   {N_("Bottom Left"), 0, 1},
                                                   {N_("Bottom Right"), 1, 1}}};

const Side& side_of(Anchor anchor) {
  return sides.at(static_cast<std::size_t>(anchor));
}

}  // namespace

Vector anchor_offset(Anchor anchor, double width, double height) {
  const auto& side = side_of(anchor);
  return {std::round(-width * side.x), std::round(-height * side.y)};
}

const char* anchor_name(Anchor anchor) {
  return side_of(anchor).name;
}

std::string display_name(Anchor anchor) {
  return _(side_of(anchor).name);
}

YAML::Emitter& operator<<(YAML::Emitter& out, Anchor anchor) {
  return out << anchor_name(anchor);
}

void operator>>(const YAML::Node& node, Anchor& anchor) {
  const std::string_view text = scalar_of(node);
  const auto side =
      std::ranges::find(sides, text, [](const Side& s) { return std::string_view(s.name); });
  if (side == sides.end()) throw YAML::InvalidScalar(node.Mark());
  anchor = static_cast<Anchor>(side - sides.begin());
}

}  // namespace zemblar

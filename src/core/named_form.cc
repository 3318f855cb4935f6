#include "core/named_form.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "core/layout.h"
#include "core/object.h"
#include "core/toplevel.h"

namespace zemblar {
namespace {

constexpr std::array section_words = {"views",   "locomotives", "points", "blocks",
                                      "devices", "scripts"};  // in the order of Section

}  // namespace

NamedForm::NamedForm() {
  used_ = this;  // until the private form of this ends
}

void NamedForm::write(YAML::Emitter& out, const Object& object) {
  std::vector<Glib::ustring> path;
  const auto* one = &object;
  for (; one && !dynamic_cast<const Toplevel*>(one); one = one->get_parent()) {
    path.push_back(one->get_name());
  }
  out << YAML::Flow << YAML::BeginSeq;
  if (const auto* top = dynamic_cast<const Toplevel*>(one)) {
    out << section_words.at(static_cast<std::size_t>(top->section()));
  }
  std::ranges::for_each(path.rbegin(), path.rend(), [&](const auto& name) { out << name; });
  out << YAML::EndSeq;
}

std::function<bool()> NamedForm::read(const YAML::Node& node, std::function<bool(Object*)> assign) {
  if (!node.IsSequence() || node.size() < 2) throw YAML::InvalidScalar(node.Mark());
  const auto* const word = std::ranges::find(section_words, scalar_of(node[0]));
  if (word == section_words.end()) throw YAML::InvalidScalar(node.Mark());
  const auto section = static_cast<Section>(std::distance(section_words.begin(), word));
  std::vector<Glib::ustring> path(node.size() - 1);
  for (std::size_t i = 0; i < path.size(); ++i) node[i + 1] >> path[i];
  return [this, section, path, assign = std::move(assign)] {
    const Object* found = &Layout::get().get_toplevel(section);
    for (const auto& name : path) {
      if (found) found = found->find_child(name);
    }
    const bool used = assign(const_cast<Object*>(found));
    if (!used) missing_.insert(path.back().raw());
    return used;
  };
}

}  // namespace zemblar

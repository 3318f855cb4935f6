#pragma once

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <string>

#include "core/private_form.h"
#include "core/yaml_io.h"
#include "diagram/view.h"
#include "diagram/view_zone.h"
#include "edit/edit_journal.h"
#include "edit/edit_list.h"
#include "tests/support/layout_fixture.h"

namespace zemblar::test {

/// Where two texts begin to differ; empty for equal ones.
inline std::string difference(const std::string& is, const std::string& expected) {
  if (is == expected) return "";
  const auto [a, b] = std::ranges::mismatch(is, expected);
  const auto from = std::max<std::ptrdiff_t>(0, a - is.begin() - 300);
  return is.substr(from, 380) + "\n--- instead of ---\n" + expected.substr(from, 380);
}

class EditTest : public LayoutTest {
 protected:
  /// One step, as of one event.
  template <typename Action>
  void act(const Action& action) {
    journal.begin([this](std::unique_ptr<EditStep> step) { steps.record(std::move(step)); });
    action();
    journal.end();
  }
  bool undo() {
    const EditJournal::Pause pause;
    return steps.undo();
  }
  bool redo() {
    const EditJournal::Pause pause;
    return steps.redo();
  }
  /// Undoes to the first of the texts, or redoes to the last of them.
  void expect_undo(const std::vector<std::string>& known) {
    for (auto i = known.size() - 1; i-- > 0;) {
      ASSERT_TRUE(undo());
      ASSERT_EQ(difference(bytes(), known[i]), "") << i;
    }
  }
  void expect_redo(const std::vector<std::string>& known) {
    for (auto i = 1U; i < known.size(); ++i) {
      ASSERT_TRUE(redo());
      ASSERT_EQ(difference(bytes(), known[i]), "") << i;
    }
  }
  /// The layout file, and what it cannot hold.
  std::string bytes() {
    auto text = layout().serialize();
    ObjectNumbers numbers;
    const PrivateForm form(numbers);
    YAML::Emitter out;
    out << YAML::BeginSeq;
    for (int section = 0; section < section_count; ++section) {
      for (auto* object : layout().get_toplevel(static_cast<Section>(section))) out << *object;
    }
    out << YAML::EndSeq;
    return text + out.c_str();
  }
  std::string next_undo() {
    const auto* step = steps.next_undo();
    return step ? step->get_name().raw() : "";
  }

  template <typename Drawn, typename Shown>
  Drawn& draw(Shown& shown, const Vector& place) {
    auto* drawn = new Drawn(shown, place);
    view().add_object(drawn);
    return *drawn;
  }
  ViewZone& draw_zone(const Vector& place) {
    return draw<ViewZone>(*layout().get_blocks().add(new Zone), place);
  }
  View& view() {
    auto& views = layout().get_views();
    return dynamic_cast<View&>(views.empty() ? *views.add(new View) : *views.child_at(0));
  }

  EditJournal& journal = EditJournal::get();
  EditList steps;
};

}  // namespace zemblar::test

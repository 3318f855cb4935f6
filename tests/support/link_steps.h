#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "core/status.h"
#include "devices/device.h"
#include "runtime/timer.h"

namespace zemblar::test {

/// A step in the life of a link: what happens, and what device and status line tell after a time.
struct LinkStep {
  const char* name;
  std::function<void()> happens;
  std::chrono::milliseconds passes;
  LinkPhase phase;
  std::chrono::milliseconds lasted;  ///< how long the phase has
  std::string why;                   ///< stands in the device's sentence; empty for no sentence
  std::string status;                ///< stands in the status line; empty for an empty line
};

inline void walk(VirtualClock& clock, const Device& device, const std::vector<LinkStep>& steps) {
  for (const auto& step : steps) {
    SCOPED_TRACE(step.name);
    step.happens();
    clock.advance(step.passes);
    const auto& link = device.link_state();
    EXPECT_EQ(display_name(step.phase), display_name(link.phase));
    EXPECT_EQ(step.lasted, std::chrono::floor<std::chrono::milliseconds>(clock.now() - link.since));
    const auto expect_in = [](const std::string& part, const std::string& text) {
      EXPECT_EQ(part.empty(), text.empty()) << text;
      EXPECT_NE(std::string::npos, text.find(part)) << part << "\n" << text;
    };
    expect_in(step.why, link.why.raw());
    expect_in(step.status, get_status().raw());
  }
}

}  // namespace zemblar::test

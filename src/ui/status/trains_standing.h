#pragma once

#include <functional>

namespace zemblar {

class Device;

/// Calls `action` when the trains stand that a device drives, or all: they are stopped first, which
/// the status line tells. One action waits at a time; another one is refused with a word there.
void when_trains_stand(std::function<void()> action, const Device* device = nullptr);

}  // namespace zemblar

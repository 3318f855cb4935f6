#pragma once

#include <functional>

namespace zemblar {

class Device;

/// Stops the trains that a device drives, or all trains for null, and calls `action` when they
/// stand. The status line says that they are being stopped. Only one action can wait at a time;
/// another one is refused with a text in the status line.
void when_trains_stand(std::function<void()> action, const Device* device = nullptr);

}  // namespace zemblar

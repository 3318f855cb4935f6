#pragma once

#include <sigc++/signal.h>

namespace zemblar {

class Object;

/// Emitted after the user has made an object by a button in the panel of its container. The object
/// is in the layout already.
sigc::signal<void, Object&>& signal_object_made();

}  // namespace zemblar

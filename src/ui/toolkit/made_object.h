#pragma once

#include <sigc++/signal.h>

namespace zemblar {

class Object;

/// A person has made an object by a button of the panel of its container. It is in the layout.
sigc::signal<void, Object&>& signal_object_made();

}  // namespace zemblar

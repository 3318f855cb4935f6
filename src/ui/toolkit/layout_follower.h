#pragma once

#include <functional>
#include <vector>

#include "core/layout.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// Connects a window to the current layout, and again whenever Open replaces the layout.
///
/// `attach` is called at once and after each replacement. It fills the window from the layout and
/// adds its connections to the given list; these are disconnected before the next call and by the
/// destructor. New empties the layout in place; the layout's own signals report that.
class LayoutFollower {
 public:
  using Connections = std::vector<ScopedConnection>;
  using Attach = std::function<void(Layout&, Connections&)>;

  explicit LayoutFollower(Attach attach) : attach_(std::move(attach)) {
    replaced_ = Layout::signal_replaced().connect([this] { follow(); });
    follow();
  }
  LayoutFollower(const LayoutFollower&) = delete;
  LayoutFollower& operator=(const LayoutFollower&) = delete;

 private:
  void follow() {
    connections_.clear();
    attach_(Layout::get(), connections_);
  }

  Attach attach_;
  Connections connections_;
  ScopedConnection replaced_;
};

}  // namespace zemblar

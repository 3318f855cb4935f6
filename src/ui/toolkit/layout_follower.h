#pragma once

#include <functional>
#include <vector>

#include "core/layout.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// Keeps a window in step with the current layout, which Open replaces by another one.
///
/// `attach` is called at once and after each replacement. It fills the window from the layout and
/// puts its connections in the list that it is given; these end before the next call, and with the
/// follower. New empties the layout in place and is seen through the layout's own signals.
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

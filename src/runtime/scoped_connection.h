#pragma once

#include <sigc++/connection.h>

#include <concepts>
#include <utility>

namespace zemblar {

/// A connection that ends with its scope. Move-only.
class ScopedConnection {
 public:
  ScopedConnection() = default;
  /// Accepts what a signal's `connect` returns: a connection, or an iterator that converts to one.
  template <std::convertible_to<sigc::connection> Connected>
  ScopedConnection(const Connected& connected) : connection_(connected) {}
  ScopedConnection(ScopedConnection&& other) noexcept
      : connection_(std::exchange(other.connection_, {})) {}
  ScopedConnection& operator=(ScopedConnection&& other) noexcept {
    if (this == &other) return *this;
    connection_.disconnect();
    connection_ = std::exchange(other.connection_, {});
    return *this;
  }
  ~ScopedConnection() { connection_.disconnect(); }

  void disconnect() { connection_.disconnect(); }
  bool connected() const { return connection_.connected(); }
  void block(bool should_block = true) { connection_.block(should_block); }
  void unblock() { connection_.unblock(); }

  /// Gives the connection up, so that it outlives the scope.
  sigc::connection release() { return std::exchange(connection_, {}); }

 private:
  sigc::connection connection_;
};

}  // namespace zemblar

#pragma once

#include <giomm/cancellable.h>
#include <giomm/enums.h>
#include <giomm/inputstream.h>
#include <giomm/outputstream.h>
#include <giomm/socketclient.h>
#include <giomm/socketconnectable.h>
#include <giomm/socketconnection.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "runtime/read_turns.h"
#include "runtime/read_watch.h"

namespace zemblar {

/// A TCP client whose operations look synchronous to the fiber that calls them.
///
/// Each operation suspends the running fiber until it has ended, except a read or write that can be
/// carried out at once; only `is_connected` and `drop` need no fiber. One read and one write may be
/// in progress at the same time, from two fibers. The socket and its streams exist until the last
/// operation has ended, even if all other references are released.
///
/// Throws Gio::Error: BUSY "Already Connected" from `connect`, CLOSED "Not Connected" from all
/// others, PENDING from a second read at one time, CANCELLED when the cancellable is, before or
/// during the call, and other errors of the toolkit. IPv4 only. A peer that sends without a pause
/// does not block the main loop (see ReadTurns). A peer that vanishes without closing the
/// connection is noticed within 15 s, whether or not data is sent: `read` then throws TIMED_OUT or
/// HOST_UNREACHABLE.
///
/// The operations of a conversation are virtual, so that tests can use a stream in memory.
class Socket : public Glib::Object {
 public:
  using Cancel = Glib::RefPtr<Gio::Cancellable>;
  struct Peer {
    std::string host;  ///< numeric
    unsigned port = 0;
  };

  static Glib::RefPtr<Socket> create();
  /// Makes `create` return the sockets that `maker` makes, connected to a simulated far end.
  static void make_by(std::function<Glib::RefPtr<Socket>()> maker);

  [[nodiscard]] virtual bool is_connected() const { return static_cast<bool>(connection_); }
  /// The resolved address of the far end; no value without a connection, or if it is not on a
  /// network.
  [[nodiscard]] virtual std::optional<Peer> peer() const;
  /// Resolves the address and connects, with TCP_NODELAY. True on success.
  virtual bool connect(const Glib::RefPtr<Gio::SocketConnectable>& address,
                       const Cancel& cancel = {});
  /// Closes the connection; a read in progress ends with an error.
  virtual bool close(const Cancel& cancel = {});
  /// Releases the connection without closing it, when closing has failed.
  virtual void drop();

  /// Returns the number of bytes read; 0 at the end of the stream or for a `count` of 0. The buffer
  /// must exist until the operation has ended.
  virtual gssize read(void* buffer, gsize count, const Cancel& cancel = {});
  /// Returns the number of bytes written, which may be less than `count`. Each call is one send().
  virtual gssize write(const void* bytes, gsize count, const Cancel& cancel = {});
  gssize write(const std::string& bytes, const Cancel& cancel = {});
  /// Returns the number of bytes skipped.
  gssize skip(gsize count, const Cancel& cancel = {});
  bool flush(const Cancel& cancel = {});
  /// Sends the content of a stream; returns the number of bytes sent.
  gssize splice(const Glib::RefPtr<Gio::InputStream>& source, Gio::OutputStreamSpliceFlags flags,
                const Cancel& cancel = {});

 protected:
  Socket();

 private:
  void wait_for_turn();
  // No value when the transfer would have to wait; for a write also without a connection.
  static std::optional<gssize> read_at_once(Gio::InputStream& stream, void* buffer, gsize count,
                                            const Cancel& cancel);
  std::optional<gssize> write_at_once(const void* bytes, gsize count, const Cancel& cancel);
  /// Waits for an operation on one side of the connection.
  template <typename Stream, typename Start, typename Finish>
  auto run(const Glib::RefPtr<Stream>& stream, Start start, Finish finish);
  void take(const Glib::RefPtr<Gio::SocketConnection>& connection);
  Glib::RefPtr<Gio::InputStream> input() const;
  Glib::RefPtr<Gio::OutputStream> output() const;
  Glib::RefPtr<Socket> hold();

  ReadTurns turns_;
  Glib::RefPtr<Gio::SocketConnection> connection_;  // null while not connected
  std::shared_ptr<ReadWatch> watch_;                // watches the connection's descriptor
  Glib::RefPtr<Gio::SocketClient> client_;
};

}  // namespace zemblar

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
/// Each operation suspends the running fiber until it has ended, but for a read or write that the
/// system can carry out at once; only `is_connected` and `drop` need no fiber. One read and one
/// write may be under way at the same time, from two fibers. The socket and its streams live until
/// the last operation has ended, whoever lets go of it.
///
/// Throws Gio::Error: BUSY "Already Connected" from `connect`, CLOSED "Not Connected" from all
/// others, PENDING from a second read at one time, CANCELLED when the cancellable is, before or
/// during the call, and whatever else the toolkit reports. IPv4 alone. A peer that sends without
/// pause does not stop the main loop (see ReadTurns). A peer that has gone without a word is
/// noticed within 15 s, whether something is sent or not: `read` then throws TIMED_OUT or
/// HOST_UNREACHABLE.
///
/// The four operations of a conversation are virtual, so that a stream in memory can stand in.
class Socket : public Glib::Object {
 public:
  using Cancel = Glib::RefPtr<Gio::Cancellable>;
  struct Peer {
    std::string host;  ///< numeric
    unsigned port = 0;
  };

  static Glib::RefPtr<Socket> create();
  /// `create` hands out what `maker` makes from now on: sockets to a simulated far end.
  static void make_by(std::function<Glib::RefPtr<Socket>()> maker);

  [[nodiscard]] virtual bool is_connected() const { return static_cast<bool>(connection_); }
  /// The far end's address as resolved; none without a connection, or when it is not on a network.
  [[nodiscard]] std::optional<Peer> peer() const;
  /// True when there is a connection, without delay of small segments (TCP_NODELAY). The address is
  /// resolved first.
  virtual bool connect(const Glib::RefPtr<Gio::SocketConnectable>& address,
                       const Cancel& cancel = {});
  /// Reads that are under way end with an error.
  virtual bool close(const Cancel& cancel = {});
  /// Lets go of the connection without a word, for one that could not be closed.
  virtual void drop();

  /// The count read, 0 at the end of the stream or for a `count` of 0. The buffer must stay until
  /// the operation has ended.
  virtual gssize read(void* buffer, gsize count, const Cancel& cancel = {});
  /// The count written, which may be less. One send for each call.
  virtual gssize write(const void* bytes, gsize count, const Cancel& cancel = {});
  gssize write(const std::string& bytes, const Cancel& cancel = {});
  /// The count skipped.
  gssize skip(gsize count, const Cancel& cancel = {});
  bool flush(const Cancel& cancel = {});
  /// Sends what the stream holds; the count sent.
  gssize splice(const Glib::RefPtr<Gio::InputStream>& source, Gio::OutputStreamSpliceFlags flags,
                const Cancel& cancel = {});

 protected:
  Socket();

 private:
  void wait_for_turn();
  // None when the transfer would have to wait; for a write also when there is no connection.
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
  std::shared_ptr<ReadWatch> watch_;                // of its descriptor
  Glib::RefPtr<Gio::SocketClient> client_;
};

}  // namespace zemblar

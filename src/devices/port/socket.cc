#include "devices/port/socket.h"

#include <gio/gio.h>
#include <giomm/error.h>
#include <giomm/inetsocketaddress.h>
#include <netinet/in.h>
#include <netinet/tcp.h>

#include "runtime/async_result.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

using Slot = Gio::SlotAsyncReady;
using Result = Glib::RefPtr<Gio::AsyncResult>;

/// A failed precondition completes with our own kind of result, which the toolkit's finish
/// functions do not accept.
void rethrow_own(const Result& result) {
  const auto error = Glib::RefPtr<AsyncResult<std::exception_ptr>>::cast_dynamic(result);
  if (error) std::rethrow_exception(error->value());
}

/// The far end may vanish without closing the connection, because its cable is unplugged or its
/// power fails. The system probes an idle connection, and gives up when sent data is not
/// acknowledged; both take at most 15 s (tcp(7)).
constexpr int idle_time = 5;       // seconds until the first probe
constexpr int probe_interval = 3;  // seconds
constexpr int probe_count = 3;
constexpr int sent_limit = 12'000;  // milliseconds

void set_tcp_option(GSocket* socket, int option, int value) {
  g_socket_set_option(socket, IPPROTO_TCP, option, value, nullptr);
}

void watch_peer(GSocket* socket) {
  g_socket_set_keepalive(socket, TRUE);
  set_tcp_option(socket, TCP_KEEPIDLE, idle_time);
  set_tcp_option(socket, TCP_KEEPINTVL, probe_interval);
  set_tcp_option(socket, TCP_KEEPCNT, probe_count);
  set_tcp_option(socket, TCP_USER_TIMEOUT, sent_limit);
}

std::function<Glib::RefPtr<Socket>()> maker;  // null for real sockets

/// The number of bytes that a non-blocking transfer has moved; no value if it would block.
std::optional<gssize> outcome(gssize moved, GError* error) {
  if (!error) return moved;
  if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK)) {
    Glib::Error::throw_exception(error);
  }
  g_error_free(error);
  return {};
}

}  // namespace

Glib::RefPtr<Socket> Socket::create() {
  return maker ? maker() : Glib::RefPtr<Socket>(new Socket);
}

void Socket::make_by(std::function<Glib::RefPtr<Socket>()> other) {
  maker = std::move(other);
}

Socket::Socket() : client_(Gio::SocketClient::create()) {
  client_->set_family(Gio::SOCKET_FAMILY_IPV4);
  client_->set_socket_type(Gio::SOCKET_TYPE_STREAM);
  client_->set_protocol(Gio::SOCKET_PROTOCOL_TCP);
}

Glib::RefPtr<Socket> Socket::hold() {
  reference();
  return Glib::RefPtr<Socket>(this);
}

Glib::RefPtr<Gio::InputStream> Socket::input() const {
  return connection_ ? connection_->get_input_stream() : Glib::RefPtr<Gio::InputStream>();
}

Glib::RefPtr<Gio::OutputStream> Socket::output() const {
  return connection_ ? connection_->get_output_stream() : Glib::RefPtr<Gio::OutputStream>();
}

std::optional<Socket::Peer> Socket::peer() const {
  if (!connection_) return std::nullopt;
  try {
    const auto address =
        Glib::RefPtr<Gio::InetSocketAddress>::cast_dynamic(connection_->get_remote_address());
    if (!address) return std::nullopt;
    return Peer{.host = address->get_address()->to_string(), .port = address->get_port()};
  } catch (const Glib::Error&) {
    return std::nullopt;  // the far end has vanished already
  }
}

// The stream is held: the connection may be closed, and another opened, before the end.
template <typename Stream, typename Start, typename Finish>
auto Socket::run(const Glib::RefPtr<Stream>& stream, Start start, Finish finish) {
  const auto self = hold();
  return await(
      [self, stream, start](const Slot& done) {
        if (stream) {
          start(*stream.operator->(), done);
        } else {
          complete_with_error(done, self, Gio::Error(Gio::Error::CLOSED, "Not Connected"));
        }
      },
      [self, stream, finish](Result& result) {
        rethrow_own(result);
        return finish(*stream.operator->(), result);
      });
}

bool Socket::connect(const Glib::RefPtr<Gio::SocketConnectable>& address, const Cancel& cancel) {
  const auto self = hold();
  return await(
      [self, address, cancel](const Slot& done) {
        if (self->connection_) {
          complete_with_error(done, self, Gio::Error(Gio::Error::BUSY, "Already Connected"));
        } else {
          self->client_->connect_async(address, cancel, done);
        }
      },
      [self](Result& result) {
        rethrow_own(result);
        self->take(self->client_->connect_finish(result));
        return true;
      });
}

void Socket::take(const Glib::RefPtr<Gio::SocketConnection>& connection) {
  // Two attempts may run at once; releasing the second connection closes it.
  if (connection_) throw Gio::Error(Gio::Error::BUSY, "Already Connected");
  auto* socket = connection->get_socket()->gobj();
  set_tcp_option(socket, TCP_NODELAY, 1);
  watch_peer(socket);
  connection_ = connection;
  watch_ = std::make_shared<ReadWatch>(connection->get_socket()->get_fd());
}

bool Socket::close(const Cancel& cancel) {
  const auto closed = run(
      connection_,
      [cancel](Gio::IOStream& stream, const Slot& done) { stream.close_async(done, cancel); },
      [](Gio::IOStream& stream, const Result& result) { return stream.close_finish(result); });
  if (!closed) return false;
  if (watch_) watch_->end();
  drop();
  return true;
}

void Socket::drop() {
  watch_.reset();
  connection_.reset();
}

// A station answers quickly, and nearly every line fits into the system's buffer. Trying a
// non-blocking transfer first saves the iterations of the main loop that the toolkit's asynchronous
// transfer needs. A read that has to wait uses ReadWatch instead.

std::optional<gssize> Socket::read_at_once(Gio::InputStream& stream, void* buffer, gsize count,
                                           const Cancel& cancel) {
  GError* error = nullptr;
  const auto got = g_pollable_input_stream_read_nonblocking(
      G_POLLABLE_INPUT_STREAM(stream.gobj()), buffer, count, Glib::unwrap(cancel), &error);
  return outcome(got, error);
}

std::optional<gssize> Socket::write_at_once(const void* bytes, gsize count, const Cancel& cancel) {
  const auto stream = output();
  if (!stream) return {};
  GError* error = nullptr;
  const auto written = g_pollable_output_stream_write_nonblocking(
      G_POLLABLE_OUTPUT_STREAM(stream->gobj()), bytes, count, Glib::unwrap(cancel), &error);
  return outcome(written, error);
}

void Socket::wait_for_turn() {
  fiber::yield([this](fiber* f) { turns_.wait([f] { fiber::resume(f, 0); }); });
}

// The stream is held: the connection may be closed, and another opened, before the end.
gssize Socket::read(void* buffer, gsize count, const Cancel& cancel) {
  const auto self = hold();
  if (turns_.is_used_up()) wait_for_turn();
  const auto stream = input();
  const auto watch = watch_;
  if (!stream) throw Gio::Error(Gio::Error::CLOSED, "Not Connected");
  if (watch->is_waiting()) throw Gio::Error(Gio::Error::PENDING, "Read Under Way");
  auto got = read_at_once(*stream.operator->(), buffer, count, cancel);
  if (got) return *got;
  const auto began = Clock::now();
  for (; !got; got = read_at_once(*stream.operator->(), buffer, count, cancel)) watch->wait(cancel);
  turns_.note_wait(Clock::now() - began);
  return *got;
}

gssize Socket::write(const void* bytes, gsize count, const Cancel& cancel) {
  if (const auto written = write_at_once(bytes, count, cancel)) return *written;
  return run(
      output(),
      [=](Gio::OutputStream& stream, const Slot& done) {
        stream.write_async(bytes, count, done, cancel);
      },
      [](Gio::OutputStream& stream, const Result& result) { return stream.write_finish(result); });
}

gssize Socket::write(const std::string& bytes, const Cancel& cancel) {
  return write(bytes.data(), bytes.size(), cancel);
}

gssize Socket::skip(gsize count, const Cancel& cancel) {
  return run(
      input(),
      [=](Gio::InputStream& stream, const Slot& done) { stream.skip_async(count, done, cancel); },
      [](Gio::InputStream& stream, const Result& result) { return stream.skip_finish(result); });
}

bool Socket::flush(const Cancel& cancel) {
  return run(
      output(),
      [=](Gio::OutputStream& stream, const Slot& done) { stream.flush_async(done, cancel); },
      [](Gio::OutputStream& stream, const Result& result) { return stream.flush_finish(result); });
}

gssize Socket::splice(const Glib::RefPtr<Gio::InputStream>& source,
                      Gio::OutputStreamSpliceFlags flags, const Cancel& cancel) {
  return run(
      output(),
      [=](Gio::OutputStream& stream, const Slot& done) {
        stream.splice_async(source, done, cancel, flags);
      },
      [](Gio::OutputStream& stream, const Result& result) { return stream.splice_finish(result); });
}

}  // namespace zemblar

#include "simulator/stations/tcp_server.h"

#include <giomm/error.h>
#include <giomm/inetaddress.h>
#include <giomm/inetsocketaddress.h>
#include <giomm/init.h>
#include <glibmm/main.h>
#include <netinet/in.h>
#include <netinet/tcp.h>

#include <array>
#include <stdexcept>
#include <string>

namespace zemblar::simulator {
namespace {

const auto readable_events = Glib::IO_IN | Glib::IO_HUP | Glib::IO_ERR;
constexpr std::size_t max_backlog = 1 << 24;  // bytes for a client that does not read

bool would_block(const Glib::Error& error) {
  return error.matches(G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK);
}

}  // namespace

/// One connection, shared by the server and whoever is in the middle of using it.
class TcpServer::Connection : public ClientLink, public std::enable_shared_from_this<Connection> {
 public:
  Connection(TcpServer& server, Glib::RefPtr<Gio::Socket> socket)
      : server_(server), socket_(std::move(socket)) {}
  ~Connection() override { shut(); }

  void start() {
    socket_->set_blocking(false);
    // A message in pieces would wait for the other side's acknowledgement.
    socket_->set_option(IPPROTO_TCP, TCP_NODELAY, 1);
    client_ = server_.hub_.join(*this);
    readable_ = Glib::signal_io().connect([this](Glib::IOCondition) { return read(); },
                                          socket_->get_fd(), readable_events);
  }

  void write(std::string_view bytes) override {
    backlog_ += bytes;
    if (!writable_.connected()) flush();
  }

  void close() override {
    const auto keep = shared_from_this();
    shut();
    server_.connections_.erase(keep);
  }

 private:
  bool read() {
    const auto keep = shared_from_this();
    std::array<char, 4096> buffer;
    gssize count = 0;
    try {
      count = socket_->receive(buffer.data(), buffer.size());
    } catch (const Glib::Error& error) {
      if (would_block(error)) return true;
    }
    if (count > 0) {
      server_.hub_.receive(client_, {buffer.data(), static_cast<std::size_t>(count)});
      return readable_.connected();
    }
    server_.hub_.leave(client_);
    close();
    return false;
  }

  // Sends what the socket takes; says whether something is left. A broken connection is seen by
  // the reader as well: it alone tells the hub.
  bool flush() {
    try {
      while (!backlog_.empty()) {
        const auto count = socket_->send(backlog_.data(), backlog_.size());
        backlog_.erase(0, static_cast<std::size_t>(count));
      }
    } catch (const Glib::Error& error) {
      if (would_block(error) && backlog_.size() <= max_backlog) {
        wait_until_writable();
        return true;
      }
      give_up();
    }
    return false;
  }

  void wait_until_writable() {
    if (writable_.connected()) return;
    writable_ = Glib::signal_io().connect([this](Glib::IOCondition) { return flush(); },
                                          socket_->get_fd(), Glib::IO_OUT);
  }

  void give_up() {
    backlog_.clear();
    try {
      socket_->shutdown(true, true);
    } catch (const Glib::Error&) {  // it was not connected any more
    }
  }

  void shut() {
    readable_.disconnect();
    writable_.disconnect();
    try {
      socket_->close();
    } catch (const Glib::Error&) {  // closed all the same
    }
  }

  TcpServer& server_;
  Glib::RefPtr<Gio::Socket> socket_;
  StationClient client_ = 0;
  std::string backlog_;  // what the socket did not take yet
  sigc::connection readable_;
  sigc::connection writable_;
};

TcpServer::TcpServer(StationHub& hub) : hub_(hub) {
  Gio::init();
}

TcpServer::~TcpServer() {
  stop();
}

std::uint16_t TcpServer::listen(std::uint16_t port) {
  stop();
  try {
    const auto loopback = Gio::InetAddress::create_loopback(Gio::SOCKET_FAMILY_IPV4);
    auto listener = Gio::Socket::create(Gio::SOCKET_FAMILY_IPV4, Gio::SOCKET_TYPE_STREAM,
                                        Gio::SOCKET_PROTOCOL_TCP);
    listener->set_blocking(false);
    listener->bind(Gio::InetSocketAddress::create(loopback, port), true);
    listener->listen();
    const auto bound =
        Glib::RefPtr<Gio::InetSocketAddress>::cast_dynamic(listener->get_local_address());
    port_ = bound->get_port();
    listener_ = listener;
  } catch (const Glib::Error& error) {
    throw std::runtime_error("Cannot listen on 127.0.0.1:" + std::to_string(port) + ": " +
                             error.what().raw());
  }
  acceptable_ = Glib::signal_io().connect([this](Glib::IOCondition) { return accept(); },
                                          listener_->get_fd(), Glib::IO_IN);
  return port_;
}

void TcpServer::stop() {
  acceptable_.disconnect();
  port_ = 0;
  if (listener_) listener_->close();
  listener_.reset();
  hub_.drop_all();
}

bool TcpServer::accept() {
  try {
    const auto connection = std::make_shared<Connection>(*this, listener_->accept());
    connections_.insert(connection);
    connection->start();
  } catch (const Gio::Error& error) {
    // Who went away between the knock and the answer is forgotten. When there is no room for
    // another connection the knock stays, and would be heard without end.
    if (error.code() == Gio::Error::TOO_MANY_OPEN_FILES) listener_->close();
  } catch (const Glib::Error&) {
  }
  return listener_ && !listener_->is_closed();
}

}  // namespace zemblar::simulator

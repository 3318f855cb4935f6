#include "simulator/railway/memory_server.h"

#include <giomm/error.h>

#include <algorithm>

#include "runtime/fiber.h"
#include "runtime/scoped_connection.h"

namespace zemblar::simulator {

using Milliseconds = MemoryServer::Milliseconds;

/// An attempt to connect that is not answered is repeated by the system after this, then after
/// twice that, and so on (tcp(7)).
constexpr Milliseconds first_repeat{1000};

void after_on_clock(Milliseconds delay, std::function<void()> call) {
  Timeout::once(delay, std::move(call)).release();
}

/// One connection: what the station has sent and nobody has read yet.
class MemoryServer::Link : public ClientLink, public std::enable_shared_from_this<Link> {
 public:
  explicit Link(MemoryServer& server) : server_(server), client_(server.hub_.join(*this)) {}
  ~Link() override { leave(); }

  void write(std::string_view bytes) override { arrive(std::string(bytes)); }
  void close() override { station_closed_ = true, wake(); }

  void arrive(std::string bytes) {
    after_on_clock(server_.latency, [weak = weak_from_this(), bytes] {
      if (const auto link = weak.lock(); link && !link->dead_) link->inbox += bytes, link->wake();
    });
  }
  void send(std::string bytes) {
    after_on_clock(server_.latency, [weak = weak_from_this(), bytes] {
      const auto link = weak.lock();
      if (link && !link->dead_) link->server_.hub_.receive(link->client_, bytes);
    });
  }
  void leave() {
    if (!left_ && !station_closed_ && !dead_) server_.hub_.leave(client_);
    left_ = true;
    wake();
  }
  /// The far end has gone without a word.
  void die() {
    if (dead_) return;
    dead_ = true;
    server_.hub_.leave(client_);
    after_on_clock(server_.keep_alive, [weak = weak_from_this()] {
      if (const auto link = weak.lock()) link->given_up_ = true, link->close();
    });
  }
  /// The system has found out; told once, then the stream is at its end.
  [[nodiscard]] bool take_failure() { return std::exchange(given_up_, false); }
  [[nodiscard]] bool ended() const { return station_closed_ && inbox.empty(); }
  [[nodiscard]] bool broken() const { return station_closed_ || left_; }
  [[nodiscard]] bool left() const { return left_; }

  void wait_for_bytes(const Socket::Cancel& cancel) {
    ScopedConnection on_cancel;
    if (cancel)
      on_cancel = sigc::connection(cancel->signal_cancelled().connect([this] { wake(); }));
    fiber::yield([this](fiber* f) { reader_ = f; });
  }

  std::string inbox;

 private:
  void wake() {
    if (auto* reader = std::exchange(reader_, nullptr)) {
      after_on_clock(Milliseconds(0), [reader] { fiber::resume(reader, 0); });
    }
  }

  MemoryServer& server_;
  StationClient client_;
  bool station_closed_ = false;
  bool dead_ = false;
  bool given_up_ = false;
  bool left_ = false;
  fiber* reader_ = nullptr;
};

class MemoryServer::MemorySocket : public Socket {
 public:
  explicit MemorySocket(MemoryServer& server) : server_(server) {}
  ~MemorySocket() override { drop(); }

  bool is_connected() const override { return link_ != nullptr; }
  std::optional<Peer> peer() const override { return server_.peer; }

  bool connect(const Glib::RefPtr<Gio::SocketConnectable>&, const Cancel& cancel) override {
    if (link_) throw Gio::Error(Gio::Error::BUSY, "Already Connected");
    server_.attempts.push_back(Clock::now());
    pass(server_.latency, cancel);
    for (auto pause = first_repeat; server_.away_; pause *= 2) pass(pause, cancel);
    if (!server_.up) throw Gio::Error(Gio::Error::CONNECTION_REFUSED, "Connection refused");
    link_ = std::make_shared<Link>(server_);
    server_.newest_ = link_;
    return true;
  }

  bool close(const Cancel& cancel) override {
    connected()->leave();
    pass(Milliseconds(0), cancel);
    link_.reset();
    return true;
  }

  void drop() override {
    if (link_) link_->leave();
    link_.reset();
  }

  gssize read(void* buffer, gsize count, const Cancel& cancel) override {
    const auto link = connected();
    if (count == 0) pass(Milliseconds(0), cancel);
    while (count > 0 && link->inbox.empty() && !link->ended()) {
      link->wait_for_bytes(cancel);
      if (cancel && cancel->is_cancelled()) throw Gio::Error(Gio::Error::CANCELLED, "Cancelled");
      if (link->left()) throw Gio::Error(Gio::Error::CLOSED, "Closed");
    }
    if (link->take_failure()) throw Gio::Error(Gio::Error::TIMED_OUT, "Connection timed out");
    const auto length = std::min(static_cast<std::size_t>(count), link->inbox.size());
    std::copy_n(link->inbox.begin(), length, static_cast<char*>(buffer));
    link->inbox.erase(0, length);
    return static_cast<gssize>(length);
  }

  gssize write(const void* bytes, gsize count, const Cancel& cancel) override {
    const auto link = connected();
    if (link->broken()) throw Gio::Error(Gio::Error::BROKEN_PIPE, "Broken pipe");
    const auto length = std::min(static_cast<std::size_t>(count), server_.write_limit);
    link->send(std::string(static_cast<const char*>(bytes), length));
    pass(server_.write_time, cancel);
    if (link->left()) throw Gio::Error(Gio::Error::CLOSED, "Closed");
    return static_cast<gssize>(length);
  }

 private:
  std::shared_ptr<Link> connected() const {
    if (!link_) throw Gio::Error(Gio::Error::CLOSED, "Not Connected");
    return link_;
  }
  static void pass(Milliseconds time, const Cancel& cancel) {
    if (!sleep_for(time, cancel)) throw Gio::Error(Gio::Error::CANCELLED, "Cancelled");
  }

  MemoryServer& server_;
  std::shared_ptr<Link> link_;
};

Glib::RefPtr<Socket> MemoryServer::socket() {
  return Glib::RefPtr<Socket>(new MemorySocket(*this));
}

void MemoryServer::kill() {
  up = false;
  hub_.drop_all();
}

void MemoryServer::vanish() {
  away_ = true;
  if (const auto link = newest_.lock()) link->die();
}

void MemoryServer::inject(std::string bytes) {
  if (const auto link = newest_.lock()) link->arrive(std::move(bytes));
}

}  // namespace zemblar::simulator

#include "simulator/stations/ecos_hub.h"

#include <deque>

#include "simulator/stations/line_splitter.h"

namespace zemblar::simulator {
namespace {

struct Outgoing {
  std::string text;
  std::size_t piece;              // bytes at a time, 0 for all
  std::chrono::milliseconds gap;  // after a piece
  std::size_t written = 0;
  bool due = false;
};

/// The number in the end line of a reply.
unsigned status_of(const std::string& reply) {
  constexpr std::string_view mark = "<END ";
  const auto begin = reply.rfind(mark) + mark.size();
  return parse_decimal(std::string_view(reply).substr(begin, reply.find(' ', begin) - begin))
      .value_or(0);
}

}  // namespace

struct EcosHub::Client {
  EcosClient number;
  ClientLink* link;  // null when the client is gone
  LineSplitter lines{};
  std::deque<std::shared_ptr<Outgoing>> outbox{};
  bool pausing = false;  // between two pieces
};

EcosClient EcosHub::join(ClientLink& link) {
  const auto number = ++last_client_;
  clients_.emplace(number, std::make_shared<Client>(Client{number, &link}));
  log_.add(number, EcosLog::Kind::note, "connected");
  return number;
}

void EcosHub::receive(EcosClient client, std::string_view bytes) {
  const auto found = clients_.find(client);
  if (found == clients_.end()) return;
  const auto keep = found->second;
  for (const auto& line : keep->lines.feed(bytes)) {
    if (line.empty()) continue;
    execute(client, line);
    if (!clients_.contains(client)) return;
  }
  if (keep->lines.overflowed()) drop(client, "line too long");
}

void EcosHub::leave(EcosClient client) {
  const auto found = clients_.find(client);
  if (found == clients_.end()) return;
  found->second->link = nullptr;
  clients_.erase(found);
  model_.leave(client);
  log_.add(client, EcosLog::Kind::note, "disconnected");
}

void EcosHub::drop_all() {
  while (!clients_.empty()) drop(clients_.begin()->first, "hung up");
}

unsigned EcosHub::add_locomotive(unsigned address, std::string name) {
  unsigned id = 0;
  post(model_.add_locomotive(address, std::move(name), &id));
  return id;
}

void EcosHub::post(const std::vector<EcosMessage>& messages) {
  for (const auto& message : messages) send(message.to, message.text);
}

void EcosHub::execute(EcosClient client, const std::string& line) {
  log_.add(client, EcosLog::Kind::received, line);
  const auto status = react(client, line);
  if (observer_) observer_(client, line, status);
}

std::optional<unsigned> EcosHub::react(EcosClient client, const std::string& line) {
  const auto fault = faults_.hit(line);
  if (!fault) {
    const auto messages = model_.execute(client, line);
    post(messages);
    return status_of(messages.front().text);
  }
  if (fault->effect == EcosFaults::Effect::fail) {
    const auto text = status_text(static_cast<EcosStatus>(fault->status));
    send(client, format_reply(line, {}, fault->status, text));
    return fault->status;
  }
  if (fault->effect == EcosFaults::Effect::drop) drop(client, "dropped by a fault");
  return {};
}

// A message never overtakes an earlier one, also when the delay becomes shorter between them.
void EcosHub::send(EcosClient client, const std::string& message) {
  const auto found = clients_.find(client);
  if (found == clients_.end()) return;
  const auto outgoing =
      std::make_shared<Outgoing>(Outgoing{faults_.garbage + message, faults_.pieces, faults_.gap});
  found->second->outbox.push_back(outgoing);
  if (faults_.late.count() <= 0) {
    outgoing->due = true;
    return pump(found->second);
  }
  after_(faults_.late, [this, outgoing, weak = std::weak_ptr(found->second)] {
    outgoing->due = true;
    if (const auto waiting = weak.lock()) pump(waiting);
  });
}

void EcosHub::pump(const std::shared_ptr<Client>& client) {
  // A listener of the log may hang up in the middle.
  while (client->link && !client->pausing && !client->outbox.empty() &&
         client->outbox.front()->due) {
    const auto outgoing = client->outbox.front();
    const auto piece =
        std::string_view(outgoing->text)
            .substr(outgoing->written, outgoing->piece ? outgoing->piece : std::string::npos);
    outgoing->written += piece.size();
    client->link->write(piece);
    if (outgoing->written == outgoing->text.size()) {
      client->outbox.pop_front();
      log_.add(client->number, EcosLog::Kind::sent, outgoing->text);
    }
    if (outgoing->piece == 0) continue;
    client->pausing = true;
    after_(outgoing->gap, [this, weak = std::weak_ptr(client)] {
      const auto waiting = weak.lock();
      if (!waiting) return;
      waiting->pausing = false;
      pump(waiting);
    });
  }
}

void EcosHub::drop(EcosClient client, std::string_view reason) {
  const auto found = clients_.find(client);
  if (found == clients_.end()) return;
  const auto link = found->second->link;
  leave(client);
  link->close();
  log_.add(client, EcosLog::Kind::note, reason);
}

}  // namespace zemblar::simulator

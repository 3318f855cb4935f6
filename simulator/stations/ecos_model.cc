#include "simulator/stations/ecos_model.h"

#include <algorithm>

#include "simulator/stations/ecos_options.h"

namespace zemblar::simulator {
namespace {

constexpr unsigned last_switch = 2048;  // 512 accessory decoders of four outputs

std::string line_of(unsigned object, std::string_view text) {
  return decimal(object).append(" ").append(text);
}

/// "DCC17g" as the output "DCC17" and the position. Standard: the protocol before the number may
/// be left out and means the station's default then.
std::pair<std::string, char> parse_switch(std::string_view text) {
  const auto digit = std::min(text.find_first_of("0123456789"), text.size());
  const auto protocol = text.substr(0, digit);
  text.remove_prefix(digit);
  const char position = text.empty() ? '\0' : text.back();
  const auto number = parse_decimal(text.substr(0, text.size() - (text.empty() ? 0 : 1)));
  if (!protocol.empty() && protocol != "DCC" && protocol != "MOT") refuse_parameter("switch");
  if (!number || *number < 1 || *number > last_switch) refuse_parameter("switch");
  if (position != 'g' && position != 'r') refuse_parameter("switch");
  return {(protocol.empty() ? "DCC" : std::string(protocol)) + decimal(*number), position};
}

}  // namespace

EcosModel::Handler EcosModel::handler(std::string_view verb) {
  static const std::map<std::string_view, Handler> handlers{
      {"get", &EcosModel::get},
      {"set", &EcosModel::set},
      {"request", &EcosModel::request},
      {"release", &EcosModel::release},
      {"create", &EcosModel::create},
      {"delete", &EcosModel::remove},
      {"queryObjects", &EcosModel::query_objects},
  };
  const auto found = handlers.find(verb);
  if (found == handlers.end()) throw EcosRefusal{EcosStatus::unknown_command, std::string(verb)};
  return found->second;
}

std::vector<EcosMessage> EcosModel::execute(EcosClient client, std::string_view line) {
  const auto reply = [&](const std::vector<std::string>& body, EcosStatus status,
                         const std::string& detail) {
    auto text = std::string(status_text(status));
    if (!detail.empty()) text += ": " + detail;
    return EcosMessage{client, format_reply(line, body, static_cast<unsigned>(status), text)};
  };
  const auto parsed = parse_command(line);
  if (const auto* error = std::get_if<EcosSyntaxError>(&parsed)) {
    const auto where = error->reason + " at " + decimal(static_cast<unsigned>(error->position));
    return {reply({}, EcosStatus::syntax_error, where)};
  }
  try {
    Call call{client, std::get<EcosCommand>(parsed)};
    (this->*handler(call.command.verb))(call);
    std::vector<EcosMessage> messages{reply(call.body, EcosStatus::ok, "")};
    std::ranges::move(take_events(), std::back_inserter(messages));
    return messages;
  } catch (const EcosRefusal& refusal) {
    events_.clear();
    return {reply({}, refusal.status, refusal.detail)};
  }
}

void EcosModel::leave(EcosClient client) {
  std::erase_if(views_, [&](const auto& view) { return view.second == client; });
  for (auto& [id, locomotive] : locomotives_) {
    if (locomotive.holder == client) locomotive.holder.reset();
  }
}

std::vector<EcosMessage> EcosModel::add_locomotive(unsigned address, std::string name,
                                                   unsigned* id) {
  const auto added = insert({.address = address, .name = std::move(name)});
  if (id) *id = added;
  return take_events();
}

const EcosLocomotive* EcosModel::locomotive(unsigned address) const {
  const auto found =
      std::find_if(locomotives_.rbegin(), locomotives_.rend(),
                   [&](const auto& entry) { return entry.second.address == address; });
  return found == locomotives_.rend() ? nullptr : &found->second;
}

std::vector<EcosMessage> EcosModel::press(bool power, bool emergency) {
  set_power(power);
  for (auto& [id, locomotive] : locomotives_) {
    auto wanted = locomotive;
    if (emergency) wanted.speed = 0;
    change(locomotive, wanted);
  }
  return take_events();
}

void EcosModel::get(Call& call) {
  const auto object = call.command.object;
  must_exist(object);
  for (const auto& option : call.command.options) {
    if (object == station_object) {
      for (const auto& text : station_attribute(power_, option)) {
        call.body.push_back(line_of(object, text));
      }
    } else if (object == locomotive_manager && option.name == "size") {
      const auto size = static_cast<unsigned>(locomotives_.size());
      call.body.push_back(line_of(object, "size[" + decimal(size) + "]"));
    } else if (object < first_locomotive) {
      refuse_option(option);
    } else {
      call.body.push_back(line_of(object, attribute(locomotive_object(object), option)));
    }
  }
}

void EcosModel::set(Call& call) {
  must_exist(call.command.object);
  switch (call.command.object) {
    case station_object:
      return set_station(call);
    case switching_manager:
      return set_switches(call);
    default:
      return set_locomotive(call);
  }
}

void EcosModel::set_station(const Call& call) {
  bool power = power_;
  for (const auto& option : call.command.options) {
    if (option.name != "go" && option.name != "stop") refuse_option(option);
    power = option.name == "go";
  }
  set_power(power);
}

void EcosModel::set_switches(const Call& call) {
  std::vector<std::pair<std::string, char>> wanted;
  for (const auto& option : call.command.options) {
    if (option.name != "switch") refuse_option(option);
    if (option.args.size() != 1) refuse_parameter(option.name);
    wanted.push_back(parse_switch(option.args.front()));
  }
  for (const auto& [output, position] : wanted) {
    switches_[output] = position;
    tell_viewers(switching_manager,
                 {line_of(switching_manager, "switch[" + output + position + "]")});
  }
}

void EcosModel::set_locomotive(const Call& call) {
  auto& locomotive = controlled(call);
  auto wanted = locomotive;
  for (const auto& option : call.command.options) apply(option, wanted);
  change(locomotive, wanted);
}

void EcosModel::request(Call& call) {
  const auto object = call.command.object;
  must_allow_access(call.command);
  if (call.command.find("control")) {
    take_control(locomotive_object(object), call.client, call.command.find("force"));
  }
  if (call.command.find("view")) views_.insert({object, call.client});
}

// Standard: without force, an object that another holds is refused; with force, the other loses
// it and is told so, whether it views the object or not.
void EcosModel::take_control(EcosLocomotive& locomotive, EcosClient client, bool force) {
  const auto holder = locomotive.holder;
  if (holder && *holder != client) {
    if (!force) throw EcosRefusal{EcosStatus::no_control, "held by another"};
    const auto lost = line_of(locomotive.id, "msg[CONTROL_LOST]");
    events_.push_back({*holder, format_event(locomotive.id, {lost})});
  }
  locomotive.holder = client;
}

// Guessed: to release the control that one does not have is an error, to release a view is not.
void EcosModel::release(Call& call) {
  must_allow_access(call.command);
  if (call.command.find("control")) controlled(call).holder.reset();
  if (call.command.find("view")) views_.erase({call.command.object, call.client});
}

// Guessed: without "append" nothing would come into the list, so it is required.
void EcosModel::create(Call& call) {
  must_exist(call.command.object);
  if (call.command.object != locomotive_manager) {
    throw EcosRefusal{EcosStatus::unknown_object, "cannot create there"};
  }
  EcosLocomotive created;
  for (const auto& option : call.command.options) {
    if (option.name != "append") describe(option, created);
  }
  if (!call.command.find("append")) refuse_parameter("append");
  if (!call.command.find("addr")) refuse_parameter("addr");
  call.body.push_back(
      line_of(locomotive_manager, "id[" + decimal(insert(std::move(created))) + "]"));
}

void EcosModel::remove(Call& call) {
  const auto id = controlled(call).id;
  tell_viewers(id, {line_of(id, "msg[REMOVED]")});  // guessed
  std::erase_if(views_, [&](const auto& view) { return view.first == id; });
  locomotives_.erase(id);
  const auto size = static_cast<unsigned>(locomotives_.size());
  tell_viewers(locomotive_manager, {line_of(locomotive_manager, "size[" + decimal(size) + "]")});
}

void EcosModel::query_objects(Call& call) {
  must_exist(call.command.object);
  if (call.command.object == switching_manager) return;
  if (call.command.object != locomotive_manager) {
    throw EcosRefusal{EcosStatus::unknown_object, "not a manager"};
  }
  for (const auto& [id, locomotive] : locomotives_) {
    auto line = decimal(id);
    for (const auto& option : call.command.options) line += " " + attribute(locomotive, option);
    call.body.push_back(std::move(line));
  }
}

void EcosModel::set_power(bool on) {
  if (std::exchange(power_, on) == on) return;
  tell_viewers(station_object, {line_of(station_object, on ? "status[GO]" : "status[STOP]")});
}

void EcosModel::change(EcosLocomotive& locomotive, const EcosLocomotive& wanted) {
  std::vector<std::string> lines;
  for (const auto& text : changed_attributes(locomotive, wanted)) {
    lines.push_back(line_of(locomotive.id, text));
  }
  locomotive = wanted;
  if (!lines.empty()) tell_viewers(locomotive.id, lines);
}

// A real station words this event differently; the size is an option of the manager as well.
unsigned EcosModel::insert(EcosLocomotive locomotive) {
  const auto id = next_id_++;
  locomotive.id = id;
  locomotives_.emplace(id, std::move(locomotive));
  const auto size = static_cast<unsigned>(locomotives_.size());
  tell_viewers(locomotive_manager, {line_of(locomotive_manager, "size[" + decimal(size) + "]")});
  return id;
}

void EcosModel::must_exist(unsigned object) const {
  const bool fixed =
      object == station_object || object == locomotive_manager || object == switching_manager;
  if (!fixed && !locomotives_.contains(object)) {
    throw EcosRefusal{EcosStatus::unknown_object, decimal(object)};
  }
}

// Standard: everything can be viewed; only locomotives are controlled by one client at a time.
void EcosModel::must_allow_access(const EcosCommand& command) const {
  must_exist(command.object);
  for (const auto& option : command.options) {
    const bool control = option.name == "control" || option.name == "force";
    const bool allowed = control ? command.object >= first_locomotive : option.name == "view";
    if (!allowed) refuse_option(option);
  }
}

EcosLocomotive& EcosModel::locomotive_object(unsigned id) {
  const auto found = locomotives_.find(id);
  if (found == locomotives_.end()) throw EcosRefusal{EcosStatus::unknown_object, decimal(id)};
  return found->second;
}

EcosLocomotive& EcosModel::controlled(const Call& call) {
  auto& locomotive = locomotive_object(call.command.object);
  if (locomotive.holder != call.client) throw EcosRefusal{EcosStatus::no_control, ""};
  return locomotive;
}

void EcosModel::tell_viewers(unsigned object, const std::vector<std::string>& body) {
  for (auto view = views_.lower_bound({object, 0}); view != views_.end() && view->first == object;
       ++view) {
    events_.push_back({view->second, format_event(object, body)});
  }
}

}  // namespace zemblar::simulator

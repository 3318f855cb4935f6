#include "simulator/stations/ecos_options.h"

#include <algorithm>
#include <array>

namespace zemblar::simulator {
namespace {

constexpr unsigned max_speed = 127;
constexpr std::array<std::string_view, 9> protocols{"MM14",  "MM27",   "MM28", "MMFKT", "DCC14",
                                                    "DCC28", "DCC128", "SX32", "MFX"};
constexpr std::array<const char*, 5> plain_attributes{"addr", "name", "protocol", "speed", "dir"};

void expect_args(const EcosOption& option, std::size_t count) {
  if (option.args.size() != count) refuse_parameter(option.name);
}

unsigned number(const EcosOption& option, std::size_t index, unsigned min, unsigned max) {
  const auto value = parse_decimal(option.args.at(index));
  if (!value || *value < min || *value > max) refuse_parameter(option.name);
  return *value;
}

unsigned function_number(const EcosOption& option) {
  return number(option, 0, 0, EcosLocomotive::function_count - 1);
}

std::string function_attribute(const EcosLocomotive& locomotive, unsigned function) {
  const bool on = locomotive.functions[function];
  return "func[" + decimal(function) + (on ? ",1]" : ",0]");
}

std::string numeric(const char* name, unsigned value) {
  return std::string(name) + "[" + decimal(value) + "]";
}

void apply_function(const EcosOption& option, EcosLocomotive& locomotive) {
  expect_args(option, 2);
  locomotive.functions[function_number(option)] = number(option, 1, 0, 1) == 1;
}

}  // namespace

void refuse_option(const EcosOption& option) {
  throw EcosRefusal{EcosStatus::unknown_option, option.name};
}

void refuse_parameter(const std::string& option_name) {
  throw EcosRefusal{EcosStatus::bad_parameter, option_name};
}

void apply(const EcosOption& option, EcosLocomotive& locomotive) {
  if (option.name == "func") return apply_function(option, locomotive);
  if (option.name == "stop") {
    expect_args(option, 0);
    locomotive.speed = 0;
  } else if (option.name == "speed") {
    expect_args(option, 1);
    locomotive.speed = number(option, 0, 0, max_speed);
  } else if (option.name == "dir") {
    expect_args(option, 1);
    locomotive.direction = number(option, 0, 0, 1);
  } else {
    describe(option, locomotive);
  }
}

void describe(const EcosOption& option, EcosLocomotive& locomotive) {
  if (option.name == "addr") {
    expect_args(option, 1);
    locomotive.address = number(option, 0, 1, EcosLocomotive::max_address);
  } else if (option.name == "name") {
    expect_args(option, 1);
    locomotive.name = option.args.front();
  } else if (option.name == "protocol") {
    expect_args(option, 1);
    if (std::ranges::count(protocols, option.args.front()) == 0) refuse_parameter(option.name);
    locomotive.protocol = option.args.front();
  } else {
    refuse_option(option);
  }
}

std::string attribute(const EcosLocomotive& locomotive, const EcosOption& option) {
  if (option.name == "func") {
    expect_args(option, 1);
    return function_attribute(locomotive, function_number(option));
  }
  expect_args(option, 0);
  if (option.name == "addr") return numeric("addr", locomotive.address);
  if (option.name == "name") return "name[" + quoted(locomotive.name) + "]";
  if (option.name == "protocol") return "protocol[" + locomotive.protocol + "]";
  if (option.name == "speed") return numeric("speed", locomotive.speed);
  if (option.name == "dir") return numeric("dir", locomotive.direction);
  refuse_option(option);
}

std::vector<std::string> changed_attributes(const EcosLocomotive& before,
                                            const EcosLocomotive& after) {
  std::vector<std::string> changes;
  for (const auto* name : plain_attributes) {
    auto value = attribute(after, {name, {}});
    if (value != attribute(before, {name, {}})) changes.push_back(std::move(value));
  }
  for (unsigned function = 0; function < EcosLocomotive::function_count; ++function) {
    if (before.functions[function] == after.functions[function]) continue;
    changes.push_back(function_attribute(after, function));
  }
  return changes;
}

std::vector<std::string> station_attribute(bool power, const EcosOption& option) {
  if (option.name == "status") return {power ? "status[GO]" : "status[STOP]"};
  if (option.name == "info") {
    return {"ECoS", "ProtocolVersion[0.5]", "ApplicationVersion[4.2.9]", "HardwareVersion[2.0]"};
  }
  refuse_option(option);
}

}  // namespace zemblar::simulator

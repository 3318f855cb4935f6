#include "devices/ecos/device_ecos.h"

#include <yaml-cpp/yaml.h>

#include "core/document_class.h"
#include "core/i18n.h"
#include "core/yaml_io.h"
#include "devices/ecos/ecos_commands.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(private_class<ECoS>(
    "!device/ESU/ECoS", Section::devices, [] { return C_("New Device", "ESU ECoS"); }));

std::string value_command(unsigned object, const DecoderUpdate& wanted) {
  if (wanted.mask == DecoderUpdate::speed_bit) return ecos::set_speed(object, wanted.speed);
  if (wanted.mask == DecoderUpdate::direction_bit) {
    return ecos::set_direction(object, wanted.direction);
  }
  const auto fn = DecoderUpdate::function_of(wanted.mask);
  return ecos::set_function(object, fn, wanted.function(fn));
}

}  // namespace

/// A command and its answer.
struct ECoS::Question : Exchange {
  std::optional<ECoSMsg> answer{};
};

class ECoS::MessageReader : public Reader {
 public:
  explicit MessageReader(ECoS& station) : station_(station) {}

  char* tail() override { return framing_.tail(); }
  std::size_t room() const override { return framing_.room(); }
  std::size_t capacity() const override { return ECoSFraming::capacity; }
  void add(std::size_t count) override { framing_.add(count); }
  bool pass_message() override {
    const auto message = framing_.next();
    if (message) station_.dispatch(*message);
    return message.has_value();
  }

 private:
  ECoS& station_;
  ECoSFraming framing_;
};

ECoS::ECoS(const Glib::RefPtr<Socket>& socket)
    : Glib::ObjectBase("DeviceECoS"), NetworkStation(_("ESU ECoS %1"), default_port, socket) {
  start_connecting();
}

ECoS::ECoS(const YAML::Node& node, const Glib::RefPtr<Socket>& socket)
    : Glib::ObjectBase("DeviceECoS"), NetworkStation(_("ESU ECoS %1"), default_port, socket) {
  load(node);
  start_connecting();
}

ECoS::~ECoS() {
  NetworkStation::on_deleting();
}

void ECoS::save(YAML::Emitter& out) const {
  out << unwritable_tag("device/ESU/ECoS") << YAML::BeginMap;
  save_keys(out);
  out << YAML::EndMap;
}

// --- Messages ---

std::unique_ptr<NetworkStation::Reader> ECoS::make_reader() {
  return std::make_unique<MessageReader>(*this);
}

void ECoS::dispatch(const ECoSMsg& message) {
  if (message.get_type() == ECoSMsg::event) {
    if (message.get_object() != ecos::station) return;
    const auto body = message.get_objects().find(ecos::station);
    if (body != message.get_objects().end() && body->second.contains("status")) {
      follow_power(body->second);
    }
    return;
  }
  auto* question = static_cast<Question*>(waiting_exchange());
  if (!question || message.get_command() != question->command) return;
  question->answer = message;
  answered();
}

void ECoS::follow_power(const ECoSMsg::Values& station) {
  value_of(station, "status") == "GO" ? track_power_is_on() : track_power_is_off();
}

/// Only inside a BusyLock. Keeps status and text of the answer in `refusal_`.
ECoSMsg ECoS::command(const std::string& text) {
  Question question{{text}};
  run(question, text + '\n');
  refusal_ = {question.answer->get_status(), readable(question.answer->get_status_text())};
  return *std::move(question.answer);
}

ECoSMsg ECoS::expect_success(const std::string& text) {
  auto answer = command(text);
  if (answer.get_status() != 0) throw CmdFailed();
  return answer;
}

/// "25 (no control)"
Glib::ustring ECoS::refusal_words() const {
  if (refusal_.status == 0) return _("something that is of no use");
  return Glib::ustring::compose("%1 (%2)", refusal_.status, refusal_.text);
}

// --- What the railway asks for ---

StopOrder ECoS::make_stop_order() const {
  return {.bytes = ecos::stop() + '\n', .confirmation = "<END 0"};
}

void ECoS::log_on() {
  expect_success(ecos::request_view(ecos::station));
  expect_success(ecos::request_view(ecos::locomotive_manager));
  follow_power(expect_success(ecos::get_status()).get_object(ecos::station));
}

bool ECoS::send_power(bool on) {
  return command(on ? ecos::go() : ecos::stop()).get_status() == 0;
}

void ECoS::send_output(unsigned address, unsigned output, bool on) {
  expect_success(ecos::switch_output(address, output, on));
}

void ECoS::send_item(Address address, const DecoderUpdate& wanted) {
  number_was_known_ = objects_.contains(address);
  const auto object = object_id(address);
  expect_success(ecos::request_control(object));
  expect_success(value_command(object, wanted));
  expect_success(ecos::release_control(object));
}

// A station that was set up anew knows its locomotives by other numbers, or not at all.
bool ECoS::forget_after_refusal(Address address) {
  if (!number_was_known_ || refusal_.status != ecos::unknown_object) {
    objects_.erase(address);
    return false;
  }
  objects_.clear();
  return true;
}

// --- Locomotives at the station ---

unsigned ECoS::object_id(Address address) {
  const auto known = objects_.find(address);
  if (known != objects_.end()) return known->second;
  const auto found = find_locomotive(address);
  const auto object = found ? *found : create_locomotive(address);
  objects_[address] = object;
  return object;
}

std::optional<unsigned> ECoS::find_locomotive(Address address) {
  const auto answer = expect_success(ecos::query_locomotives());
  for (const auto& [object, values] : answer.get_objects()) {
    const auto number = leading_number(value_of(values, "addr"));
    // A station may list locomotives without an address, and numbers beyond DCC.
    if (Address::is_mobile_number(number) && Address(number) == address) return object;
  }
  return std::nullopt;
}

unsigned ECoS::create_locomotive(Address address) {
  const auto name = Glib::ustring::compose(_("Locomotive %1"), address.get_addr());
  const auto answer = expect_success(ecos::create_locomotive(address, name.raw()));
  const auto manager = answer.get_objects().find(ecos::locomotive_manager);
  if (manager == answer.get_objects().end()) throw CmdFailed();
  const auto object = leading_number(value_of(manager->second, "id"));
  if (object == 0) throw CmdFailed();
  return object;
}

}  // namespace zemblar

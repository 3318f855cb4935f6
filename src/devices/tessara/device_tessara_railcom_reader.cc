#include "devices/tessara/device_tessara_railcom_reader.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <stdexcept>

#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/property.h"
#include "core/yaml_io.h"
#include "devices/device_ref.h"
#include "devices/tessara/railcom_poll.h"
#include "devices/tessara/tessara_class.h"
#include "devices/tessara/tessara_codec.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

constexpr auto dcc_device_key = "dcc-device";
constexpr std::uint8_t highest_speed = 4;  // index of the highest speed to use
constexpr unsigned poll_ms = 50;
constexpr std::chrono::milliseconds poll_time{poll_ms};

const TessaraRegistration<DeviceTessaraRailComReader> registration(
    "QVRN", [](DeviceTessara* device) { return probe_by_info(device, "QVRN"); });

}  // namespace

/// Passes a poll answer to the inputs, until the poll is cancelled. While it is not, the reader
/// exists.
class DeviceTessaraRailComReader::PollAnswerSink : public RailComPollSink {
 public:
  PollAnswerSink(DeviceTessaraRailComReader& reader, const Cancel& cancel)
      : reader_(reader), cancel_(cancel) {}

  unsigned input_count() const override { return reader_.input_count_; }
  std::uint8_t state(unsigned input) const override { return reader_.states_[input]; }

  bool set_state(unsigned input, std::uint8_t state) override {
    reader_.states_[input] = state;
    if (auto* known = reader_.inputs_[input]) known->set_state(state);
    return goes_on();
  }
  bool on_packet(unsigned input, const std::string& dcc, const std::string& bytes) override {
    if (auto* known = reader_.inputs_[input]) known->on_packet(dcc, bytes);
    return goes_on();
  }
  bool on_repeat(unsigned input, const std::string& dcc, unsigned repeat) override {
    if (auto* known = reader_.inputs_[input]) known->on_repeat(dcc, repeat);
    return goes_on();
  }

 private:
  [[nodiscard]] bool goes_on() const { return !cancel_->is_cancelled(); }

  DeviceTessaraRailComReader& reader_;
  Cancel cancel_;
};

DeviceTessaraRailComReader::DeviceTessaraRailComReader(DeviceTessaraBus* bus, std::uint8_t address)
    : Glib::ObjectBase("DeviceTessaraRailComReader"),
      DeviceTessara(_("RailCom Reader %1"), bus, address) {
  register_properties();
}

DeviceTessaraRailComReader::DeviceTessaraRailComReader(const YAML::Node& node,
                                                       DeviceTessaraBus* bus)
    : Glib::ObjectBase("DeviceTessaraRailComReader"),
      DeviceTessara(_("RailCom Reader %1"), node, bus) {
  register_properties();
  for (const auto& entry : node["inputs"]) inputs_.push_back(add(new Input(entry)));
  states_.resize(inputs_.size());
  show_link();
  read_private(node, dcc_device_key, dcc_device_);
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        follow_dcc_device();
        return true;
      },
      *this));
}

DeviceTessaraRailComReader::~DeviceTessaraRailComReader() {
  DeviceTessaraRailComReader::on_deleting();
}

void DeviceTessaraRailComReader::register_properties() {
  using Reader = DeviceTessaraRailComReader;
  signal_link_changed().connect(sigc::mem_fun(*this, &Reader::show_link));
  register_property<Device*>(this, dcc_device_key, &Reader::get_dcc_device,
                             &Reader::set_dcc_device);
}

void DeviceTessaraRailComReader::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("device/Tessara/QVRN") << YAML::BeginMap;
  save_tessara(out);
  out << YAML::Key << "inputs" << YAML::Value << YAML::BeginSeq;
  for (const auto* input : inputs_) save_input(out, input);
  out << YAML::EndSeq;
  write_private(out, dcc_device_key, static_cast<const Object*>(dcc_device_));
  out << YAML::EndMap;
}

// A missing input is written with an unused number, because a file has one for each input.
void DeviceTessaraRailComReader::save_input(YAML::Emitter& out, const Input* input) const {
  const auto id = input ? Layout::get().get_id(input) : Layout::get().unused_id();
  out << YAML::BeginMap << YAML::Key << "id" << YAML::Value << id;
  if (input) write_private(out, "name", input->get_name());
  out << YAML::EndMap;
}

void DeviceTessaraRailComReader::restore(const EntryChange& change) {
  DeviceTessara::restore(change);
  change.read_reference<Device>(dcc_device_key, [this](auto* device) { set_dcc_device(device); });
  const auto inputs = change.below("inputs");
  const auto count = std::min({inputs_.size(), inputs.former().size(), inputs.entry().size()});
  for (std::size_t i = 0; i < count; ++i) {
    if (inputs_[i]) inputs_[i]->restore({inputs.former()[i], inputs.entry()[i]});
  }
}

void DeviceTessaraRailComReader::on_deleting() {
  if (poll_cancel_) poll_cancel_->cancel();
  DeviceTessara::on_deleting();
}

void DeviceTessaraRailComReader::on_child_removing(Object* child) {
  std::ranges::replace_if(
      inputs_, [child](const Input* input) { return input == child; }, nullptr);
}

void DeviceTessaraRailComReader::set_dcc_device(Device* device) {
  if (device == dcc_device_) return;
  before_change();
  dcc_device_ = device;
  follow_dcc_device();
  notify_property(*this, dcc_device_key);
}

void DeviceTessaraRailComReader::follow_dcc_device() {
  dcc_device_deleted_ = {};
  if (!dcc_device_) return;
  dcc_device_deleted_ = dcc_device_->signal_deleted().connect([this] { set_dcc_device(nullptr); });
}

// --- In and out of service ---

bool DeviceTessaraRailComReader::start() {
  return bring_up([this](const std::string& info) { set_up(info); });
}

void DeviceTessaraRailComReader::set_up(const std::string& info) {
  const auto read = tessara::read_reader_info(info);
  if (!read) throw std::runtime_error(_("it is no RailCom reader that this program knows."));
  // Asks twice before inputs are removed, because blocks would lose their detectors.
  if (read->input_count < inputs_.size()) confirm(tessara::ask_info(), info);
  set_speeds(read->table.speeds);
  input_count_ = read->input_count;
  encodings_ = read->encodings;
  use_best_speed();
  use_best_encoding();
  match_inputs();
  reset_stream();
  poll_cancel_ = Gio::Cancellable::create();
  fiber::spawn([this, cancel = poll_cancel_] { poll(cancel); });
  const auto alive = liveness();
  const auto inputs = device_children<Device>(*this);
  for (const auto& input : inputs) {
    if (input) input->set_active(true);
  }
  if (!*alive) throw TessaraCmdFailed();
}

void DeviceTessaraRailComReader::use_best_speed() {
  const auto alive = liveness();
  for (std::uint8_t index = highest_speed; index > 0; --index) {
    if (index >= get_speeds().size() || !get_speeds()[index]) continue;
    change_speed(index);
    if (!*alive) throw TessaraCmdFailed();
    return;
  }
}

void DeviceTessaraRailComReader::use_best_encoding() {
  if (offers(0)) return use_encoding(0);
  if (offers(1)) return use_encoding(1);
  throw std::runtime_error("No Supported Encodings");
}

void DeviceTessaraRailComReader::use_encoding(std::uint8_t encoding) {
  if (!offers(encoding)) throw std::runtime_error("Unsupported Encoding");
  command(tessara::use_encoding(encoding));
  encoding_ = encoding;
}

void DeviceTessaraRailComReader::match_inputs() {
  const auto alive = liveness();
  while (inputs_.size() > input_count_) {
    auto* surplus = inputs_.back();
    inputs_.pop_back();
    if (surplus) surplus->destroy();
    if (!*alive) throw TessaraCmdFailed();
  }
  inputs_.resize(input_count_);
  states_.resize(input_count_);
  fill_places();
  if (!*alive) throw TessaraCmdFailed();
}

// Resets the history of packets in the hardware and in the inputs.
void DeviceTessaraRailComReader::reset_stream() {
  command(tessara::reset_stream());
  for (auto* input : inputs_) {
    if (input) input->forget_packets();
  }
}

void DeviceTessaraRailComReader::stop() {
  const auto alive = liveness();
  if (poll_cancel_) poll_cancel_->cancel();
  poll_cancel_.reset();
  DeviceTessara::stop();
  const auto inputs = device_children<Device>(*this);
  for (const auto& input : inputs) {
    if (input) input->go_out_of_service();
  }
}

// Passes the link state to the inputs, which have no link themselves.
void DeviceTessaraRailComReader::show_link() {
  const auto inputs = device_children<Input>(*this);
  for (const auto& input : inputs) {
    if (input) input->follow(link_state());
  }
}

// --- Places ---

void DeviceTessaraRailComReader::fill_places() {
  const auto alive = liveness();
  for (unsigned place = 0; *alive && place < inputs_.size(); ++place) {
    if (!inputs_[place]) fill_place(place);
  }
}

// A handler may destroy the new input at once.
void DeviceTessaraRailComReader::fill_place(unsigned place) {
  auto* input = new Input;
  const DeviceRef<Input> added(input);
  inputs_[place] = input;
  add(input);
  if (added) input->follow(link_state());
  if (!added) return;
  input->set_state(states_[place]);
  if (added && poll_cancel_) input->set_active(true);
}

// --- Polling ---

void DeviceTessaraRailComReader::poll(const Cancel& cancel) {
  bool understood = true;
  try {
    while (sleep_for(poll_time, cancel) && active()) poll_once(cancel);
  } catch (const TessaraCmdFailed&) {
    // The reader does not answer.
  } catch (...) {
    understood = false;
  }
  if (cancel->is_cancelled()) return;
  give_up(understood ? why_no_answer()
                     : Glib::ustring::compose(_("%1 says what the program does not understand."),
                                              get_name()));
}

void DeviceTessaraRailComReader::poll_once(const Cancel& cancel) {
  fill_places();
  tick(cancel);
  if (cancel->is_cancelled()) return;
  std::string answer;
  {
    const BusyLock lock(this, true);
    answer = command(tessara::poll());
  }
  if (cancel->is_cancelled() || encoding_ != 0) return;
  PollAnswerSink answers(*this, cancel);
  read_poll_answer(answer, answers);
}

// With another encoding than 0 nothing is reported, so nothing is timed.
void DeviceTessaraRailComReader::tick(const Cancel& cancel) {
  for (unsigned i = 0; !cancel->is_cancelled() && encoding_ == 0 && i < inputs_.size(); ++i) {
    if (auto* input = inputs_[i]) input->tick(poll_ms);
  }
}

// --- Commands ---

void DeviceTessaraRailComReader::enable_inputs(const std::vector<bool>& enabled) {
  if (enabled.size() != input_count_) throw std::runtime_error("Incorrect Vector Size");
  const BusyLock lock(this, true);
  command(tessara::enable_inputs(enabled));
}

void DeviceTessaraRailComReader::set_encoding(std::uint8_t encoding) {
  const BusyLock lock(this, true);
  use_encoding(encoding);
}

}  // namespace zemblar

#pragma once

#include <cstdint>
#include <vector>

#include "devices/tessara/device_tessara.h"
#include "devices/tessara/device_tessara_railcom_reader_input.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// A RailCom reader on a Tessara bus, or on a port of its own: as many detectors as it has inputs.
///
/// In service it is polled from a fiber of its own with pauses of 50 ms, and its inputs, which are
/// its children, tell what they were told. A poll that fails, or an answer that cannot be read,
/// takes the reader out of service; the bus looks for it from then on. Its inputs keep what they
/// saw until it is back, so that a track does not become free by a broken wire.
///
/// The hardware says how many inputs there are. An input that somebody ends leaves its place to a
/// new one, which nobody uses yet, so that all others stay with their pieces of track.
///
/// Of two encodings of poll answers it prefers 0, the only one that says anything: in encoding 1 it
/// polls and detects nothing.
///
/// In a layout file: the keys `name`, `id`, `address` on a bus, `serial-nr`, and `inputs`, a
/// sequence with a mapping for each.
class DeviceTessaraRailComReader : public DeviceTessara {
 public:
  using Input = DeviceTessaraRailComReaderInput;

  DeviceTessaraRailComReader() : DeviceTessaraRailComReader(nullptr, 0) {}
  DeviceTessaraRailComReader(DeviceTessaraBus* bus, std::uint8_t address);
  explicit DeviceTessaraRailComReader(const YAML::Node& node, DeviceTessaraBus* bus = nullptr);
  ~DeviceTessaraRailComReader() override;
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  /// The command station that knows whose an address is; null stands for the layout's default
  /// device. Not in a layout file.
  [[nodiscard]] Device* get_dcc_device() const { return dcc_device_; }
  void set_dcc_device(Device* device);

  /// In the hardware's order. Null where one has ended and its place is not filled yet.
  [[nodiscard]] const std::vector<Input*>& inputs() const { return inputs_; }

  // For fibers. Both throw TessaraCmdFailed, and DeviceInactiveException while they wait for their
  // turn.

  /// Which inputs the hardware listens to. Throws std::runtime_error
  /// "Incorrect Vector Size" unless there is one value for each.
  void enable_inputs(const std::vector<bool>& enabled);
  /// From the next poll on. Throws std::runtime_error "Unsupported Encoding" for one that the
  /// hardware has not offered.
  void set_encoding(std::uint8_t encoding);

  Glib::PropertyProxy<Device*> property_dcc_device() { return {this, "dcc-device"}; }

 protected:
  bool start() override;
  void stop() override;
  void on_deleting() override;
  void on_child_removing(Object* child) override;

 private:
  using Cancel = Glib::RefPtr<Gio::Cancellable>;
  class PollAnswerSink;

  void register_properties();
  void save_input(YAML::Emitter& out, const Input* input) const;
  void follow_dcc_device();

  void set_up(const std::string& info);
  void use_best_speed();
  void use_best_encoding();
  [[nodiscard]] bool offers(std::uint8_t encoding) const {
    return (encodings_ >> encoding & 1) != 0;
  }
  void use_encoding(std::uint8_t encoding);
  void match_inputs();
  void reset_stream();

  void show_link();

  void poll(const Cancel& cancel);
  void poll_once(const Cancel& cancel);
  void tick(const Cancel& cancel);
  void fill_places();
  void fill_place(unsigned place);

  std::vector<Input*> inputs_;
  // What the hardware said last of each input, which counts for reading what it says next whoever
  // is in that place.
  std::vector<std::uint8_t> states_;
  std::uint8_t encodings_ = 0;  // bit n for encoding n
  std::uint8_t encoding_ = 0;   // of the poll answers
  std::uint8_t input_count_ = 0;
  Device* dcc_device_ = nullptr;
  ScopedConnection dcc_device_deleted_;
  Cancel poll_cancel_;  // each poll fiber has its own
};

}  // namespace zemblar

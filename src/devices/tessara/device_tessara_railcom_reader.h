#pragma once

#include <cstdint>
#include <vector>

#include "devices/tessara/device_tessara.h"
#include "devices/tessara/device_tessara_railcom_reader_input.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// A RailCom reader on a Tessara bus, or on its own port: each of its inputs is a detector.
///
/// In service it is polled from its own fiber with pauses of 50 ms, and its children, the inputs,
/// report what they detect. A failed poll, or an unreadable answer, takes the reader out of
/// service; then the bus searches for it. Its inputs keep their state until it is back, so that a
/// broken wire does not make a track free.
///
/// The hardware reports the number of inputs. If an input is deleted, a new one takes its index, so
/// that all other inputs keep their blocks.
///
/// There are two encodings of poll answers. Encoding 0 is preferred; with encoding 1 the reader is
/// polled, but nothing is detected.
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

  /// The command station whose map of addresses identifies detected locomotives; null stands for
  /// the layout's default device. Not in a layout file.
  [[nodiscard]] Device* get_dcc_device() const { return dcc_device_; }
  void set_dcc_device(Device* device);

  /// The inputs in the hardware's order; null where an input has ended and is not replaced yet.
  [[nodiscard]] const std::vector<Input*>& inputs() const { return inputs_; }

  // For fibers. Both throw TessaraCmdFailed, and DeviceInactiveException if the reader goes out of
  // service while they wait for their turn.

  /// Selects the inputs that the hardware evaluates. Throws std::runtime_error "Incorrect Vector
  /// Size" unless there is one value per input.
  void enable_inputs(const std::vector<bool>& enabled);
  /// Selects the encoding from the next poll on. Throws std::runtime_error "Unsupported Encoding"
  /// if the hardware does not support it.
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
  // The last state of each input from the hardware, needed to read the next answer even if the
  // input was replaced.
  std::vector<std::uint8_t> states_;
  std::uint8_t encodings_ = 0;  // supported encodings; bit n is encoding n
  std::uint8_t encoding_ = 0;   // of the poll answers
  std::uint8_t input_count_ = 0;
  Device* dcc_device_ = nullptr;
  ScopedConnection dcc_device_deleted_;
  Cancel poll_cancel_;  // each poll fiber has its own
};

}  // namespace zemblar

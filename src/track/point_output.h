#pragma once

#include "core/address.h"
#include "locomotives/decoder.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

struct PointStateOutput;

/// One accessory output of a point or a signal: type, address and device.
///
/// A `Basic` output is one of the four pairs of coils of an accessory decoder, an `Extended` one an
/// accessory decoder that understands aspects, a `Function` output a function of a mobile decoder.
/// A `Servo` stores angles; nothing is sent for it yet.
///
/// A `Function` output owns a Decoder with its address and device. Each change of type, address,
/// device or number makes a new Decoder, because commands still pending in the old one were meant
/// for another function.
///
/// In a layout file an untagged mapping with `type` and `device`, and then by type `address` and
/// `output`, `address`, `address` and `function`, or nothing.
class PointOutput : public Glib::Object {
 public:
  enum class Type : int { Basic = 0, Extended = 1, Function = 2, Servo = 3 };
  static constexpr unsigned max_basic_output = 4;

  static Glib::RefPtr<PointOutput> create();
  /// Throws YAML::InvalidScalar for an unknown type, and for an address or a number that its type
  /// does not have.
  static Glib::RefPtr<PointOutput> create(const YAML::Node& node);
  ~PointOutput() override;
  void save(YAML::Emitter& out) const;
  /// Sets all settings to those of the entry.
  void restore(const YAML::Node& node);

  /// Commands a state's setting of this output.
  void send(const PointStateOutput& setting);

  [[nodiscard]] Type get_type() const { return type_; }
  /// Limits address and number to the range of the type, and clears a device that does not support
  /// the type.
  void set_type(Type type);
  /// Null stands for the layout's default device.
  [[nodiscard]] Device* get_device() const { return device_; }
  void set_device(Device* device);
  /// The address, of the kind that the type needs; a servo has none.
  [[nodiscard]] Address get_address() const { return address_; }
  void set_address(Address address);
  /// The pair of coils, 1 to 4, or the function, 0 to 28. Another number is ignored.
  [[nodiscard]] unsigned get_output() const { return output_; }
  void set_output(unsigned output);

  Glib::PropertyProxy<Type> property_type() { return {this, "type"}; }
  Glib::PropertyProxy<Device*> property_device() { return {this, "device"}; }
  Glib::PropertyProxy<Address> property_address() { return {this, "address"}; }
  Glib::PropertyProxy<unsigned> property_output() { return {this, "output"}; }
  /// A property has changed.
  sigc::signal<void>& signal_changed() { return signal_changed_; }
  /// A property is about to change.
  sigc::signal<void>& signal_changing() { return signal_changing_; }

 private:
  PointOutput();
  explicit PointOutput(const YAML::Node& node);
  void save_unused(YAML::Emitter& out) const;
  void announce(const char* property);
  void renew_decoder();

  Glib::RefPtr<Decoder> decoder_;
  Type type_ = Type::Basic;
  Device* device_ = nullptr;
  Address address_{Address::Kind::accessory, 1};
  unsigned output_ = 1;
  sigc::signal<void> signal_changed_;
  sigc::signal<void> signal_changing_;
  ScopedConnection device_deleted_;
};

/// The kind of address that outputs of a type have. A servo has none; the result is then
/// `accessory`.
[[nodiscard]] Address::Kind address_kind(PointOutput::Type type);
/// The feature that a device must support to drive outputs of a type.
[[nodiscard]] const char* required_feature(PointOutput::Type type);
/// "Basic Accessory" and so on, translated.
[[nodiscard]] Glib::ustring display_name(PointOutput::Type type);
/// The lowest and the highest number of an output of a type.
struct OutputRange {
  unsigned lowest;
  unsigned highest;
};
[[nodiscard]] OutputRange output_range(PointOutput::Type type);

}  // namespace zemblar

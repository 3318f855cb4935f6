#pragma once

#include <string>

#include "core/object.h"
#include "core/picture_path.h"

namespace zemblar {

class Decoder;
class Lok;

/// One named button of a locomotive: a function number of one of its decoders, with a behaviour, a
/// label and two pictures. A child of its Lok.
///
/// `Pulse` switches the function on and 200 ms later off, and its own state stays off; a second
/// press starts a second pulse. All other types hold their state; `Trigger` and `Script` come from
/// files and behave like `Toggle`.
///
/// A picture is the path of its file, empty for none; in a layout file a scalar, or null.
class Function : public Object {
 public:
  enum class Type : int { Toggle = 0, Pulse = 1, Trigger = 2, Script = 3 };
  static constexpr unsigned max_function = 28;

  explicit Function(Lok* lok);
  /// Throws YAML::RepresentationException for an unknown type, YAML::InvalidScalar for a function
  /// number or decoder index that the Lok cannot have.
  Function(Lok* lok, const YAML::Node& node);
  ~Function() override;
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  void set_state(bool on);
  [[nodiscard]] bool get_state() const { return state_; }
  /// Computes and sends the state in force, after a change of the overlays.
  void apply_state_overlay();
  [[nodiscard]] bool get_state_overlay() const { return state_overlay_; }

  [[nodiscard]] Lok* get_lok() const { return lok_; }
  /// 0 to 28. A higher number fails an assertion of the decoder when the button is pressed.
  [[nodiscard]] unsigned get_function() const { return function_; }
  void set_function(unsigned function);
  /// Index into the decoders of the Lok.
  [[nodiscard]] unsigned get_decoder() const { return decoder_; }
  void set_decoder(unsigned index);
  [[nodiscard]] bool get_hidden() const { return hidden_; }
  void set_hidden(bool hidden);
  [[nodiscard]] Type get_type() const { return type_; }
  void set_type(Type type);
  [[nodiscard]] const std::string& get_on_image() const { return on_image_.path(); }
  void set_on_image(const std::string& path) { set_on_picture(PicturePath(path)); }
  [[nodiscard]] const PicturePath& on_picture() const { return on_image_; }
  void set_on_picture(const PicturePath& image);
  [[nodiscard]] const std::string& get_off_image() const { return off_image_.path(); }
  void set_off_image(const std::string& path) { set_off_picture(PicturePath(path)); }
  [[nodiscard]] const PicturePath& off_picture() const { return off_image_; }
  void set_off_picture(const PicturePath& image);

  /// The decoder at `index` has been removed from the Lok.
  void on_decoder_removed(unsigned index);

  Glib::PropertyProxy<unsigned> property_function() { return {this, "function"}; }
  Glib::PropertyProxy<unsigned> property_decoder() { return {this, "decoder"}; }
  Glib::PropertyProxy<bool> property_hidden() { return {this, "hidden"}; }
  Glib::PropertyProxy<bool> property_state() { return {this, "state"}; }
  Glib::PropertyProxy<Type> property_type() { return {this, "type"}; }
  Glib::PropertyProxy_ReadOnly<bool> property_state_overlay() { return {this, "state-overlay"}; }
  Glib::PropertyProxy<std::string> property_on_image() { return {this, "on-image"}; }
  Glib::PropertyProxy<std::string> property_off_image() { return {this, "off-image"}; }

 protected:
  void on_name_changed() override;

 private:
  [[nodiscard]] Glib::RefPtr<Decoder> decoder() const;
  void send(bool on);
  void pulse();

  Glib::ustring pooled_name_;
  unsigned function_ = 0;
  unsigned decoder_ = 0;
  bool state_overlay_ = false;
  bool hidden_ = false;
  bool state_ = false;
  Type type_ = Type::Toggle;
  Lok* lok_;
  PicturePath off_image_;
  PicturePath on_image_;
};

}  // namespace zemblar

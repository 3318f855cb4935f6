#pragma once

#include <string>

#include "core/picture_path.h"
#include "track/point_base.h"

namespace zemblar {

/// A state of a signal, with the picture that a diagram shows for it.
///
/// The picture is the path of its file, empty for none; in a layout file the key `image` after the
/// keys of a state, a scalar or null.
class SignalState : public PointState {
 public:
  explicit SignalState(PointBase* owner);
  SignalState(PointBase* owner, const YAML::Node& node);
  void save(YAML::Emitter& out) const override;

  void restore(const EntryChange& change) override;
  [[nodiscard]] const std::string& get_image() const { return image_.path(); }
  void set_image(const std::string& path) { set_picture(PicturePath(path)); }
  [[nodiscard]] const PicturePath& picture() const { return image_; }
  void set_picture(const PicturePath& image);

  Glib::PropertyProxy<std::string> property_image() { return {this, "image"}; }

 private:
  void register_properties();

  PicturePath image_;
};

/// A signal: states and outputs without track. It has no links, so no train can enter it.
///
/// In a layout file: `!signal` with `name`, `id`, `outputs` and `states`.
class Signal : public PointBase {
 public:
  Signal();
  explicit Signal(const YAML::Node& node);
  void save(YAML::Emitter& out) const override;

 protected:
  [[nodiscard]] PointState* make_state() override { return new SignalState(this); }
  [[nodiscard]] PointState* make_state(const YAML::Node& node) override {
    return new SignalState(this, node);
  }

 private:
  struct Empty {};
  explicit Signal(Empty tag);
};

}  // namespace zemblar

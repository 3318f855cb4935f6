#pragma once

#include "devices/device.h"

namespace zemblar {

class DefaultDevice;

/// A device that drives locomotives and switches points over the whole railway.
///
/// Marked for default use, it serves all decoders and points for which no device is chosen: it is a
/// member of the layout's DefaultDevice as long as it is in service.
class CommandStation : public Device {
 public:
  [[nodiscard]] bool get_use_as_default() const { return use_as_default_; }
  /// Takes effect at once.
  void set_use_as_default(bool on);
  void restore(const EntryChange& change) override;

  /// "DCC/Power" fully; "DCC" and all else of it partly.
  [[nodiscard]] int supports(std::string_view feature) const override;

 protected:
  /// `default_property` is the name of the property that makes it a default device; a string
  /// literal.
  CommandStation(const Glib::ustring& name_format, const char* default_property);

  /// A driver calls these when its `start` has succeeded, and in its `stop`.
  void join_default();
  void leave_default();
  void on_deleting() override;

  bool use_as_default_ = true;

 private:
  [[nodiscard]] DefaultDevice* default_device() const;

  const char* default_property_;
};

}  // namespace zemblar

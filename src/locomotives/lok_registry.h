#pragma once

#include <functional>
#include <vector>

#include "core/address.h"
#include "locomotives/decoder.h"

namespace zemblar {

class Lok;
class Object;

/// Where a locomotive's addresses stand in the maps of the devices that drive them, so that a
/// report about an address finds the locomotive. The first locomotive with an address keeps it.
class LokRegistry {
 public:
  explicit LokRegistry(Lok* lok) : lok_(lok) {}
  ~LokRegistry() { clear(); }
  LokRegistry(const LokRegistry&) = delete;
  LokRegistry& operator=(const LokRegistry&) = delete;

  /// Registers the decoders' addresses as they are now; what was registered before goes.
  void update(const std::vector<Glib::RefPtr<Decoder>>& decoders);
  void clear();

 private:
  struct Entry {
    Device* device;
    Address address;
    std::shared_ptr<const bool> device_lives;
  };

  Lok* lok_;
  std::vector<Entry> entries_;
};

/// Visits every locomotive below `parent`, at any depth of groups.
void for_each_lok(const Object& parent, const std::function<void(Lok&)>& visit);

}  // namespace zemblar

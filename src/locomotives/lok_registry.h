#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "core/address.h"
#include "locomotives/decoder.h"

namespace zemblar {

class Lok;
class Object;

/// Where a locomotive's addresses stand in the maps of the devices that drive them, so that a
/// report about an address finds the locomotive.
///
/// The first locomotive with an address has it. The others wait and get it in their turn, since
/// every new locomotive starts with the same address.
class LokRegistry {
 public:
  explicit LokRegistry(Lok* lok) : lok_(lok) {}
  ~LokRegistry() { clear(); }
  LokRegistry(const LokRegistry&) = delete;
  LokRegistry& operator=(const LokRegistry&) = delete;

  /// Registers the decoders' addresses as they are now. What stays keeps its turn.
  void update(const std::vector<Glib::RefPtr<Decoder>>& decoders);
  void clear();

 private:
  struct Entry {
    Device* device;
    Address address;
    unsigned turn;
    std::shared_ptr<const bool> device_lives;
  };
  [[nodiscard]] Entry enter(Device& device, Address address) const;
  void withdraw(const Entry& entry) const;

  Lok* lok_;
  std::vector<Entry> entries_;
};

/// Visits every locomotive below `parent`, at any depth of groups.
void for_each_lok(const Object& parent, const std::function<void(Lok&)>& visit);

}  // namespace zemblar

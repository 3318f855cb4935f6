#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "core/address.h"
#include "locomotives/decoder.h"

namespace zemblar {

class Lok;
class Object;

/// Registers a locomotive's addresses with the devices that drive them, so that a report about an
/// address finds the locomotive.
///
/// Several locomotives may have the same address, since every new one starts with address 3. Then
/// the first one is registered, and the others wait in order until it leaves.
class LokRegistry {
 public:
  explicit LokRegistry(Lok* lok) : lok_(lok) {}
  ~LokRegistry() { clear(); }
  LokRegistry(const LokRegistry&) = delete;
  LokRegistry& operator=(const LokRegistry&) = delete;

  /// Registers the present addresses of the decoders. An unchanged address keeps its place in the
  /// queue.
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

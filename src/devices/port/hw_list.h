#pragma once

#include <glibmm/refptr.h>
#include <sigc++/signal.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "devices/port/hw_source.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

/// Represents a piece of hardware while it is plugged in, for example a serial port.
class AttachedHardware {
 public:
  virtual ~AttachedHardware() = default;
  /// Offers the hardware to the devices of the current document; does nothing while a device has
  /// it.
  virtual void offer() = 0;
  /// Call when the hardware has been unplugged.
  virtual void remove() = 0;
  /// True if its line has failed like that of unplugged hardware, even if the system still lists
  /// the hardware.
  [[nodiscard]] virtual bool is_lost() const { return false; }
  sigc::signal<void>& signal_lost() { return signal_lost_; }

 private:
  sigc::signal<void> signal_lost_;
};

/// The serial hardware that is plugged in.
///
/// The kind with the highest score gets a new piece; unknown hardware is only counted. Unplugged
/// hardware is removed from its user; when it returns, it is a new piece, which a waiting device
/// takes. The same holds for hardware that was replaced under the same name between two scans, or
/// whose line has been lost for two seconds. After a document was opened or emptied, all hardware
/// that no device holds is offered again.
class HWList {
 public:
  /// A kind of hardware that the program can use, registered by a static object in the source file
  /// of the class.
  struct Kind {
    /// How well the kind fits the hardware; 0 means not at all.
    int (*score)(const HWDevice& record);
    /// Makes the object for the hardware. `line` leads to its port, if it has one.
    std::unique_ptr<AttachedHardware> (*attach)(const HWDevice& record,
                                                std::unique_ptr<SerialLine> line);

    struct Registration {
      explicit Registration(const Kind& kind);
    };
  };

  /// The one list. Its first use starts the discovery on the main loop.
  static HWList& get();
  /// Makes the one list read `source` instead of the system's hardware or the former source.
  static void use_source(std::unique_ptr<HWSource> source);
  /// The list is empty before the first `rescan`.
  explicit HWList(std::unique_ptr<HWSource> source);
  ~HWList();

  /// Scans again, and offers all hardware that no device holds.
  void refresh();
  /// Scans for added and removed hardware, and offers what was added.
  void rescan();
  /// Number of pieces of hardware, of known and of other kinds.
  [[nodiscard]] std::size_t count() const { return records_.size(); }
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  void follow(std::unique_ptr<HWSource> source);
  void add(const HWDevice& record);
  bool drop_all_but(const std::vector<HWDevice>& present);
  void rescan_soon();

  std::unique_ptr<HWSource> source_;
  std::map<std::string, HWDevice> records_;
  Timeout rescan_;  // armed when hardware has lost its line
  std::map<std::string, std::unique_ptr<AttachedHardware>> attached_;
  sigc::signal<void> signal_changed_;
};

/// A serial port as attached hardware; the class of the port does the offering.
template <typename Port>
class AttachedPort : public AttachedHardware {
 public:
  explicit AttachedPort(const Glib::RefPtr<Port>& port)
      : port_(port), lost_(port->signal_lost().connect(signal_lost().make_slot())) {}
  void offer() override { port_->offer(); }
  void remove() override { port_->remove(); }
  [[nodiscard]] bool is_lost() const override { return port_->is_lost(); }

 private:
  Glib::RefPtr<Port> port_;
  ScopedConnection lost_;
};

/// The kind of hardware for a class of ports.
template <typename Port>
HWList::Kind port_kind() {
  return {Port::score,
          [](const HWDevice& record,
             std::unique_ptr<SerialLine> line) -> std::unique_ptr<AttachedHardware> {
            return std::make_unique<AttachedPort<Port>>(Port::create(record, std::move(line)));
          }};
}

}  // namespace zemblar

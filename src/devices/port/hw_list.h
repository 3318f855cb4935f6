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

/// What stands for a piece of hardware as long as that is there, such as a serial port.
class AttachedHardware {
 public:
  virtual ~AttachedHardware() = default;
  /// Asks the devices of the current document which of them wants it; nothing while one has it.
  virtual void offer() = 0;
  /// It has been pulled out.
  virtual void remove() = 0;
  /// Its line has failed as one does that has gone, whatever the system tells of the hardware.
  [[nodiscard]] virtual bool is_lost() const { return false; }
  sigc::signal<void>& signal_lost() { return signal_lost_; }

 private:
  sigc::signal<void> signal_lost_;
};

/// The serial hardware that is plugged in.
///
/// A new piece goes to the class that knows it best; without one it is only counted. What is pulled
/// out is removed from its user, and when it returns it is a new piece, that whoever waits for it
/// takes. So is what was replaced under the same name between two scans, and what has lost its line
/// and not found it again within two seconds. After a document was opened or emptied everything
/// that nobody holds is offered again.
class HWList {
 public:
  /// A kind of hardware that the program can use: a static object in the file of the class.
  struct Kind {
    /// How well it fits; 0 is not at all.
    int (*score)(const HWDevice& record);
    /// `line` leads to its port, if it has one.
    std::unique_ptr<AttachedHardware> (*attach)(const HWDevice& record,
                                                std::unique_ptr<SerialLine> line);

    struct Registration {
      explicit Registration(const Kind& kind);
    };
  };

  /// The one list; its first use starts discovery, on the main loop.
  static HWList& get();
  /// The one list reads `source` from now on, in the place of the system's hardware or of the
  /// source before.
  static void use_source(std::unique_ptr<HWSource> source);
  /// The list is empty before the first `rescan`.
  explicit HWList(std::unique_ptr<HWSource> source);
  ~HWList();

  /// Looks again, and offers what no device holds to those who wait for it.
  void refresh();
  /// Looks what has come and gone, and offers what has come.
  void rescan();
  /// How many pieces there are, known kinds and others.
  [[nodiscard]] std::size_t count() const { return records_.size(); }
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  void follow(std::unique_ptr<HWSource> source);
  void add(const HWDevice& record);
  bool drop_all_but(const std::vector<HWDevice>& present);
  void rescan_soon();

  std::unique_ptr<HWSource> source_;
  std::map<std::string, HWDevice> records_;
  Timeout rescan_;  // armed when something has lost its line
  std::map<std::string, std::unique_ptr<AttachedHardware>> attached_;
  sigc::signal<void> signal_changed_;
};

/// A serial port, which knows by itself how it is offered.
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

/// The kind of hardware that a class of ports stands for.
template <typename Port>
HWList::Kind port_kind() {
  return {Port::score,
          [](const HWDevice& record,
             std::unique_ptr<SerialLine> line) -> std::unique_ptr<AttachedHardware> {
            return std::make_unique<AttachedPort<Port>>(Port::create(record, std::move(line)));
          }};
}

}  // namespace zemblar

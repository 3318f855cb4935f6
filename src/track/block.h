#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "core/object.h"
#include "runtime/scoped_connection.h"
#include "track/block_link.h"
#include "track/reservation.h"

namespace zemblar {

class Device;
class Lok;

/// A stretch of track that can hold one locomotive: a node of the track graph, whose edges are the
/// joined links. There is no table of routes; a route follows from the links and the present states
/// of the points.
///
/// The detector, `input`, reports whether the block is occupied and which locomotives RailCom
/// detects in it. Several blocks may share a detector. `lok` is the locomotive that block control
/// has placed here; the first one that claims the block holds it until released. Writing the
/// property replaces the holder without that check, so that the operator can free a stuck block.
///
/// A script can reserve a block for a locomotive, which makes that one the `lok`; see Reservation.
///
/// A locomotive that ends releases all its blocks. A block that ends disconnects its links and its
/// detector, and every locomotive that stands on it loses its place.
///
/// In a layout file a link is null or `[12, left]`: the partner's block and the name of its link. A
/// link stays open if its partner is missing or already joined to another link.
class Block : public Object {
 public:
  ~Block() override;

  [[nodiscard]] Device* get_input() const { return input_; }
  /// Setting a detector emits what it has reported so far: occupancy, then each locomotive that it
  /// detects.
  void set_input(Device* input);
  /// For a zone: true if RailCom's orientation is reversed.
  [[nodiscard]] bool get_invert() const { return invert_; }
  void set_invert(bool invert);
  [[nodiscard]] Lok* get_lok() const { return lok_; }
  /// Sets the holder if the block has none.
  void set_lok(Lok* lok);
  /// Releases the block if this locomotive holds it, and no reservation keeps it for the
  /// locomotive.
  void clear_lok(Lok* lok);
  /// The tail of the locomotive has left: releases the block, reserved or not.
  void leave(Lok* lok);
  /// Sets the holder unconditionally, for the operator; null frees the block.
  void replace_lok(Lok* lok);

  [[nodiscard]] ReservationQueue& get_reservations() { return reservations_; }
  [[nodiscard]] const ReservationQueue& get_reservations() const { return reservations_; }
  /// True if the block is reserved, and this locomotive does not hold it. Then it must not enter.
  [[nodiscard]] bool is_kept_from(const Lok& lok) const {
    return !reservations_.empty() && lok_ != &lok;
  }

  void restore(const EntryChange& change) override;

  /// The link through which a train that has entered at `in` leaves; null when the points give no
  /// route now, and for a link of another block.
  virtual BlockLink* next_link(BlockLink* in) = 0;
  [[nodiscard]] virtual BlockLink* get_link(const std::string& name) = 0;
  /// Empty for a link of another block.
  [[nodiscard]] virtual std::string get_link_name(const BlockLink* link) const = 0;
  [[nodiscard]] virtual bool has_input() const { return input_ != nullptr; }
  /// False without a detector.
  [[nodiscard]] virtual bool occupied() const;
  /// The locomotives that the detector detects now.
  [[nodiscard]] virtual std::vector<Lok*> detections() const;

  Glib::PropertyProxy<Device*> property_input() { return {this, "input"}; }
  Glib::PropertyProxy<bool> property_invert() { return {this, "invert"}; }
  Glib::PropertyProxy<Lok*> property_lok() { return {this, "lok"}; }

  /// The route through the block has changed, because a point was set.
  sigc::signal<void>& signal_route() { return signal_route_; }
  /// The detector's occupancy may have changed; also emitted when it has not.
  sigc::signal<void>& signal_occupied() { return signal_occupied_; }
  /// The detector detects a locomotive, or no longer detects it.
  sigc::signal<void, Lok*>& signal_detected() { return signal_detected_; }
  sigc::signal<void, Lok*>& signal_lost() { return signal_lost_; }
  /// A reservation has come to its turn or has to wait, or one has ended.
  sigc::signal<void>& signal_reserved() { return signal_reserved_; }
  /// Faster than the notification of the property.
  sigc::signal<void>& signal_lok_changed() { return signal_lok_changed_; }

  /// A block is about to end; its links are still joined.
  static sigc::signal<void, Block*>& signal_ending();
  /// A link of a block that does not end is about to end; it is still joined.
  static sigc::signal<void, BlockLink*>& signal_link_ending();

 protected:
  explicit Block(const Glib::ustring& name_format);

  virtual void on_occupied();
  virtual void on_detected(Lok* lok);
  virtual void on_lost(Lok* lok);
  void on_deleting() override;

  /// Reads the detector; it is set when everything has been read.
  void load_input(const YAML::Node& node);
  void save_input(YAML::Emitter& out) const;
  /// Reads the link under `key`; it is joined when everything has been read.
  void load_link(const YAML::Node& node, const std::string& key, BlockLink& link);
  static void save_link(YAML::Emitter& out, const std::string& key, const BlockLink& link);
  void load_invert(const YAML::Node& node);
  void save_invert(YAML::Emitter& out) const;
  /// Joins or disconnects the link under `key`.
  static void restore_link(const EntryChange& change, const std::string& key, BlockLink& link);

 private:
  friend class BlockLink;  // adds itself to `links_`

  /// A join as read from a file. `partner` is on the heap because its address must not change until
  /// the reference is resolved.
  struct SavedLink {
    BlockLink* link;
    std::unique_ptr<Block*> partner;
    std::string name;
  };
  void set_holder(Lok* lok);
  void attach_saved();

  std::array<ScopedConnection, 3> input_signals_;
  Device* input_ = nullptr;
  bool invert_ = false;
  Lok* lok_ = nullptr;
  sigc::signal<void> signal_route_;
  sigc::signal<void> signal_occupied_;
  sigc::signal<void, Lok*> signal_detected_;
  sigc::signal<void, Lok*> signal_lost_;
  sigc::signal<void> signal_lok_changed_;
  sigc::signal<void> signal_reserved_;
  ReservationQueue reservations_{*this};
  ScopedConnection input_deleted_;
  std::vector<BlockLink*> links_;       // the block's own, in the order of construction
  std::vector<SavedLink> saved_links_;  // between reading and attaching
  bool awaits_attaching_ = false;
};

}  // namespace zemblar

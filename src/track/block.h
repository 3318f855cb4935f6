#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "core/object.h"
#include "runtime/scoped_connection.h"
#include "track/block_link.h"

namespace zemblar {

class Device;
class Lok;

/// A stretch of track that can hold one locomotive: the node of the track's graph, whose edges are
/// the joined links. There is no table of routes; a route is what the points make of the links now.
///
/// The detector, `input`, says whether the block is occupied and which locomotives RailCom sees in
/// it. Several blocks may have the same one. `lok` is the locomotive that block control has placed
/// here; the first claimant stays until it is released. Writing the property replaces it without
/// that test: with it the operator frees what is stuck.
///
/// A locomotive that ends is released from every block that holds it; a block that ends lets go of
/// its links, of its detector, and of the locomotives that stand on it, which are then unplaced.
///
/// In a layout file a link is null or `[12, left]`: the partner's block and the name of its link.
/// What cannot be joined, because the block or the link is not there or the end is taken already,
/// stays open.
class Block : public Object {
 public:
  ~Block() override;

  [[nodiscard]] Device* get_input() const { return input_; }
  /// Attaching a detector makes up for what it has reported before: occupancy, then each
  /// locomotive that it sees.
  void set_input(Device* input);
  /// For a zone: RailCom's orientation is the wrong way round.
  [[nodiscard]] bool get_invert() const { return invert_; }
  void set_invert(bool invert);
  [[nodiscard]] Lok* get_lok() const { return lok_; }
  /// Only when nobody holds the block.
  void set_lok(Lok* lok);
  /// Only when exactly that locomotive holds the block.
  void clear_lok(Lok* lok);
  /// As written by the operator: replaces the holder; null frees the block.
  void replace_lok(Lok* lok);

  void restore(const EntryChange& change) override;

  /// The link through which a train that has entered at `in` leaves; null when there is no way
  /// through now, and for a link of another block.
  virtual BlockLink* next_link(BlockLink* in) = 0;
  [[nodiscard]] virtual BlockLink* get_link(const std::string& name) = 0;
  /// Empty for a link of another block.
  [[nodiscard]] virtual std::string get_link_name(const BlockLink* link) const = 0;
  [[nodiscard]] virtual bool has_input() const { return input_ != nullptr; }
  /// False without a detector.
  [[nodiscard]] virtual bool occupied() const;
  /// The locomotives that the detector sees now.
  [[nodiscard]] virtual std::vector<Lok*> detections() const;

  Glib::PropertyProxy<Device*> property_input() { return {this, "input"}; }
  Glib::PropertyProxy<bool> property_invert() { return {this, "invert"}; }
  Glib::PropertyProxy<Lok*> property_lok() { return {this, "lok"}; }

  /// The way through the block has changed: a point was set.
  sigc::signal<void>& signal_route() { return signal_route_; }
  /// The detector's occupancy may have changed; comes also when it has not.
  sigc::signal<void>& signal_occupied() { return signal_occupied_; }
  /// The detector sees a locomotive, or no longer.
  sigc::signal<void, Lok*>& signal_detected() { return signal_detected_; }
  sigc::signal<void, Lok*>& signal_lost() { return signal_lost_; }
  /// The same as the property's notification, without its cost.
  sigc::signal<void>& signal_lok_changed() { return signal_lok_changed_; }

  /// A block is about to end; its links are still joined.
  static sigc::signal<void, Block*>& signal_ending();
  /// A link of a block that stays is about to end; it is still joined.
  static sigc::signal<void, BlockLink*>& signal_link_ending();

 protected:
  explicit Block(const Glib::ustring& name_format);

  virtual void on_occupied();
  virtual void on_detected(Lok* lok);
  virtual void on_lost(Lok* lok);
  void on_deleting() override;

  /// Reads the detector, and has it attached when everything has been read.
  void load_input(const YAML::Node& node);
  void save_input(YAML::Emitter& out) const;
  /// Reads the link under `key`, and has it joined when everything has been read.
  void load_link(const YAML::Node& node, const std::string& key, BlockLink& link);
  static void save_link(YAML::Emitter& out, const std::string& key, const BlockLink& link);
  void load_invert(const YAML::Node& node);
  void save_invert(YAML::Emitter& out) const;
  /// Joins or parts the link under `key`.
  static void restore_link(const EntryChange& change, const std::string& key, BlockLink& link);

 private:
  friend class BlockLink;  // enters itself into `links_`

  /// A join as a file has it. The partner is filled in when everything has been read, in its place.
  struct SavedLink {
    BlockLink* link;
    std::unique_ptr<Block*> partner;
    std::string name;
  };
  void hold(Lok* lok);
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
  ScopedConnection input_deleted_;
  std::vector<BlockLink*> links_;       // its own, in the order in which they were made
  std::vector<SavedLink> saved_links_;  // between reading and attaching
  bool awaits_attaching_ = false;
};

}  // namespace zemblar

#pragma once

#include <functional>
#include <utility>

#include "devices/decoder_proxy.h"

namespace zemblar {

class Device;

/// One item of a decoder on its way to one of the stations that a command goes out to.
///
/// It asks its station again until that has delivered the value, and answers once: when it has been
/// delivered, when the station goes out of service, when the decoder wishes something else, or when
/// it is abandoned. After that it wants nothing, and a station leaves it out when its turn comes.
///
/// Where the station keeps the item back or does not answer to anything, and another one serves the
/// decoder, the command goes on without it: let go of, it waits by itself for its station.
///
/// Its address and its values are always those that the decoder has now: a station may send several
/// items in one message, and what is older must not follow what is newer.
class StationProxy : public DecoderProxy {
 public:
  /// `item` is a bit of DecoderUpdate; `answers` collects for all stations.
  static Glib::RefPtr<StationProxy> create(const Glib::RefPtr<DrivenDecoder>& parent,
                                           std::uint32_t item, Device& station,
                                           const Glib::RefPtr<DecoderProxy>& answers);

  /// `tell` learns of what the station was sent besides the item.
  void on_more_delivered(std::function<void(const DecoderUpdate&)> tell) {
    more_ = std::move(tell);
  }
  /// Asks the station. The answer may come at once.
  void ask();
  void complete(const DecoderUpdate& delivered) override;
  [[nodiscard]] const DecoderUpdate& state() const override;
  [[nodiscard]] DecoderType get_type() const override { return parent_->get_type(); }
  [[nodiscard]] Address get_address() const override { return parent_->get_address(); }
  /// A newer wish takes its place, or the station has left.
  void abandon();
  /// The station keeps the item back, or answers nobody.
  [[nodiscard]] bool is_held_up() const;
  /// Answers for the command's sake, and waits on by itself.
  void let_go();
  [[nodiscard]] const DrivenDecoder& origin() const override { return *parent_.operator->(); }
  /// Null when it has answered.
  [[nodiscard]] const Device* station() const { return station_; }

 private:
  StationProxy(const Glib::RefPtr<DrivenDecoder>& parent, std::uint32_t item, Device& station,
               const Glib::RefPtr<DecoderProxy>& answers);
  [[nodiscard]] bool is_wanted() const;
  void end(const DecoderUpdate& delivered);

  Glib::RefPtr<DrivenDecoder> parent_;
  std::uint32_t item_;
  Device* station_;
  bool is_withheld_ = false;
  Glib::RefPtr<DecoderProxy> answers_;  // null when it was let go of
  std::function<void(const DecoderUpdate&)> more_;
  mutable DecoderUpdate newest_;  // what `state` has given
};

}  // namespace zemblar

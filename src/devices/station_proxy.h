#pragma once

#include <functional>
#include <utility>

#include "devices/decoder_proxy.h"

namespace zemblar {

class Device;

/// One item of a decoder, to be delivered to one of several stations.
///
/// It asks its station again until that has delivered the value. It answers once: when the value
/// has been delivered, when the station goes out of service, when the decoder wants another value,
/// or when it is abandoned. After that its mask is empty, and the station skips it.
///
/// If the station keeps the item back or does not answer, while another station serves the decoder,
/// `let_go` makes the command continue without this proxy, which then waits for its station alone.
///
/// Its address and values are always the present ones of the decoder: a station may send several
/// items in one message, and an old value must not be sent after a new one.
class StationProxy : public DecoderProxy {
 public:
  /// `item` is a bit of DecoderUpdate; `answers` collects for all stations.
  static Glib::RefPtr<StationProxy> create(const Glib::RefPtr<DrivenDecoder>& parent,
                                           std::uint32_t item, Device& station,
                                           const Glib::RefPtr<DecoderProxy>& answers);

  /// Sets a function that is called with the other items that the station was sent together with
  /// this one.
  void on_more_delivered(std::function<void(const DecoderUpdate&)> call) {
    more_ = std::move(call);
  }
  /// Asks the station. The answer may come at once.
  void ask();
  void complete(const DecoderUpdate& delivered) override;
  [[nodiscard]] const DecoderUpdate& state() const override;
  [[nodiscard]] DecoderType get_type() const override { return parent_->get_type(); }
  [[nodiscard]] Address get_address() const override { return parent_->get_address(); }
  /// Call when a newer command replaces this one, or the station has left.
  void abandon();
  /// True if the station keeps the item back, or does not answer.
  [[nodiscard]] bool is_held_up() const;
  /// Answers, so that the command can end, but continues to wait for the station.
  void let_go();
  [[nodiscard]] const DrivenDecoder& origin() const override { return *parent_.operator->(); }
  /// The station; null after the answer.
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
  Glib::RefPtr<DecoderProxy> answers_;  // null after `let_go`
  std::function<void(const DecoderUpdate&)> more_;
  mutable DecoderUpdate newest_;  // the last result of `state`
};

}  // namespace zemblar

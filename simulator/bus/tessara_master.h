#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/timer.h"
#include "simulator/bus/serial_cable.h"
#include "simulator/bus/tessara_device.h"

namespace zemblar::simulator {

/// The master of a Tessara bus at the far end of a serial cable, from the wire's side.
///
/// What the host sends while it holds DTR up is one frame; it ends when DTR falls. From then on DSR
/// is high until the answer is through, and RI is high afterwards when the frame was refused. Bytes
/// without DTR are lost. A frame that comes while an answer is under way cuts that off.
///
/// A message for a device comes in one frame or in parts, of which the master may take less than it
/// was offered; it tells the count, and the host sends the rest again. The answer is fetched in
/// pieces. Knows the protocol by itself and follows runtime/timer. The cable and the devices must
/// live longer.
class TessaraMaster {
 public:
  using Milliseconds = std::chrono::milliseconds;
  static constexpr std::size_t no_byte = static_cast<std::size_t>(-1);

  explicit TessaraMaster(SerialCable& cable);
  ~TessaraMaster();
  TessaraMaster(const TessaraMaster&) = delete;
  TessaraMaster& operator=(const TessaraMaster&) = delete;

  /// What it is and how quick it is; may be changed at any time.
  struct Options {
    std::string kind{"BUS", 4};
    std::string serial_nr = "TB-0001";
    std::vector<std::uint16_t> speeds = {0x0001};  ///< of itself, as a device
    std::uint8_t version = 1;
    std::uint8_t speed_scan = 1;
    std::uint8_t max_speed = 4;  ///< index, of the bus

    std::size_t capacity = 256;  ///< bytes that it takes of a frame, the address included; above 0
    std::size_t piece = 255;     ///< bytes of an answer in one reply, without the status; above 0
    unsigned not_ready = 0;      ///< counts of 0 before it takes a frame
    Milliseconds delay{1};       ///< until it begins to answer
    Milliseconds device_delay{3};  ///< until a device has answered
    Milliseconds absence{10};      ///< until a device that does not answer counts as absent
  };
  Options options;

  /// How it misbehaves, from the next frame on.
  struct Faults {
    bool silent = false;              ///< hears nothing and says nothing
    bool never_ready = false;         ///< takes nothing
    bool never_done = false;          ///< the answer of a device never comes
    bool endless = false;             ///< DSR stays high
    unsigned errors = 0;              ///< frames from now on that are refused
    std::size_t lost_byte = no_byte;  ///< of each answer, counted from 0, does not arrive
    std::size_t cut_at = no_byte;     ///< the cable is pulled before this byte of the next answer
  };
  Faults faults;
  /// All is well again, also with an answer that did not end.
  void end_faults();

  void attach(std::uint8_t address, TessaraDevice& device) { devices_[address] = &device; }
  void detach(std::uint8_t address) { devices_.erase(address); }
  /// The speed with which it speaks to the address.
  [[nodiscard]] unsigned speed(std::uint8_t address) const { return speeds_[address]; }
  /// Off and on again, and with it all that it feeds.
  void restart();

  /// Frames that it took for itself, as in "07 03 04", and messages for a device, in order. With
  /// `log` false nothing is kept.
  bool log = true;
  [[nodiscard]] std::vector<std::string> take_frames() { return std::exchange(frames_, {}); }
  [[nodiscard]] std::vector<std::string> take_messages(std::uint8_t address) {
    return std::exchange(messages_[address], {});
  }
  /// Frames since it was made, also those that were refused.
  [[nodiscard]] std::uint64_t frame_count() const { return frame_count_; }

 private:
  using Answer = std::optional<std::string>;
  enum class Status : char { complete = 0, more = 1, refused = 2, absent = 3 };
  /// On its way from the host, or from the device.
  struct Message {
    std::uint8_t address = 0;
    std::string bytes{};
    bool all_taken = false;  // of the last frame
    bool delivered = false;
    Clock::time_point answered{};
    Status status = Status::complete;
    std::string answer{};  // the rest
  };

  void on_dtr(bool on);
  void execute_frame();
  [[nodiscard]] Answer execute(std::string_view frame);
  [[nodiscard]] Answer set_speed(unsigned address, unsigned index);
  [[nodiscard]] Answer begin_message(std::string_view frame, bool last);
  [[nodiscard]] Answer go_on(std::string_view bytes, bool last);
  [[nodiscard]] Answer take(std::size_t address_bytes, std::string_view bytes, bool last);
  void deliver();
  [[nodiscard]] Answer fetch();

  void start_answer(std::string bytes, bool error);
  void send_piece();
  void end_answer();

  SerialCable& cable_;
  std::map<std::uint8_t, TessaraDevice*> devices_;
  std::array<std::uint8_t, 256> speeds_{};
  std::string frame_;
  std::optional<Message> message_;
  unsigned refusals_ = 0;  // counts of 0 since a frame was last taken
  std::string outgoing_;
  bool error_ = false;
  std::vector<std::string> frames_;
  std::map<std::uint8_t, std::vector<std::string>> messages_;
  std::uint64_t frame_count_ = 0;
  Timeout next_;
};

}  // namespace zemblar::simulator

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
/// The bytes that the host sends while DTR is up are one frame, which ends when DTR falls. Then DSR
/// is up until the answer has been sent; RI is up afterwards if the frame was refused. Bytes sent
/// without DTR are lost. A new frame cuts off an answer in progress.
///
/// A message for a device arrives in one frame or in parts. The master may accept less than the
/// frame; it returns the count, and the host sends the rest again. The host fetches the answer in
/// pieces. This class implements the protocol independently of the drivers, and uses the time of
/// runtime/timer. The cable and the devices must outlive it.
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
    bool silent = false;              ///< ignores all frames
    bool never_ready = false;         ///< accepts no frame
    bool never_done = false;          ///< a device's answer never arrives
    bool endless = false;             ///< DSR stays high
    unsigned errors = 0;              ///< number of next frames that are refused
    std::size_t lost_byte = no_byte;  ///< of each answer, counted from 0, does not arrive
    std::size_t cut_at = no_byte;     ///< the cable is pulled before this byte of the next answer
  };
  Faults faults;
  /// Ends all faults, also an endless answer.
  void end_faults();

  void attach(std::uint8_t address, TessaraDevice& device) { devices_[address] = &device; }
  void detach(std::uint8_t address) { devices_.erase(address); }
  /// The speed that the master uses for the address.
  [[nodiscard]] unsigned speed(std::uint8_t address) const { return speeds_[address]; }
  /// Switches the power of the master and of its devices off and on.
  void restart();

  /// Logs of frames for the master, such as "07 03 04", and of messages for a device, in order.
  /// With `log` false nothing is logged.
  bool log = true;
  [[nodiscard]] std::vector<std::string> take_frames() { return std::exchange(frames_, {}); }
  [[nodiscard]] std::vector<std::string> take_messages(std::uint8_t address) {
    return std::exchange(messages_[address], {});
  }
  /// Number of frames since construction, including refused ones.
  [[nodiscard]] std::uint64_t frame_count() const { return frame_count_; }

 private:
  using Answer = std::optional<std::string>;
  enum class Status : char { complete = 0, more = 1, refused = 2, absent = 3 };
  /// A message on its way from the host, and its answer on the way back.
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
  unsigned refusals_ = 0;  // number of counts of 0 since a frame was last accepted
  std::string outgoing_;
  bool error_ = false;
  std::vector<std::string> frames_;
  std::map<std::uint8_t, std::vector<std::string>> messages_;
  std::uint64_t frame_count_ = 0;
  Timeout next_;
};

}  // namespace zemblar::simulator

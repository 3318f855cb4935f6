#include "simulator/bus/serial_cable.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "runtime/timer.h"

namespace zemblar::simulator {

/// The program's end. It goes on, unplugged, when the cable has gone.
class SerialCable::Line : public SerialLine {
 public:
  explicit Line(SerialCable& cable) : cable_(&cable) {}
  ~Line() override {
    Line::close();
    if (cable_) cable_->line_ = nullptr;
  }

  int open(const std::string&, const LineSettings& settings) override {
    if (!cable_ || cable_->gone_) return ENOENT;
    if (cable_->refusal != 0) return cable_->refusal;
    cable_->arrived_.clear();
    cable_->settings_ = settings;
    cable_->change_dtr(false);
    cable_->rts_ = false;
    cable_->open_ = true;
    return 0;
  }
  int configure(const LineSettings& settings) override {
    if (cable_) cable_->settings_ = settings;
    return 0;
  }
  void close() override {
    stop_watching();
    if (!cable_) return;
    cable_->change_dtr(false);
    cable_->open_ = false;
  }

  Transferred read(void* buffer, std::size_t count) override {
    if (!connected()) return {0, loss_};
    if (cable_->floods) {
      std::fill_n(static_cast<char*>(buffer), count, '\xff');
      return {count, 0};
    }
    auto& arrived = cable_->arrived_;
    if (arrived.empty()) return {0, EAGAIN};
    const auto length = std::min(count, arrived.size());
    std::copy_n(arrived.begin(), length, static_cast<char*>(buffer));
    arrived.erase(0, length);
    return {length, 0};
  }
  Transferred write(const void* bytes, std::size_t count) override {
    if (!connected()) return {0, loss_};
    if (cable_->held_up_) return {0, EAGAIN};
    const auto length = std::min(count, cable_->write_limit);
    if (cable_->listener_) cable_->listener_({static_cast<const char*>(bytes), length});
    return {length, 0};
  }
  void discard_input() override {
    if (cable_) cable_->arrived_.clear();
  }

  void watch(Awaited what, std::function<void()> call) override {
    awaited_ = what;
    call_ = std::move(call);
    if (is_ready()) ready();
  }
  void stop_watching() override {
    call_ = nullptr;
    turn_.cancel();
  }
  void ready() {
    if (!call_ || !is_ready()) return;
    turn_ =
        Timeout::once(std::chrono::milliseconds(0), [this] { std::exchange(call_, nullptr)(); });
  }

  ModemLines modem_lines() const override { return connected() ? cable_->lines : ModemLines{}; }
  void set_dtr(bool on) override {
    if (cable_) cable_->change_dtr(on);
  }
  void set_rts(bool on) override {
    if (cable_) cable_->rts_ = on;
  }
  void cut() {
    loss_ = cable_->loss;
    cable_ = nullptr;
  }

 private:
  bool connected() const { return cable_ && !cable_->gone_; }
  bool is_ready() const {
    if (!connected()) return true;
    return awaited_ == Awaited::bytes ? cable_->floods || !cable_->arrived_.empty()
                                      : !cable_->held_up_;
  }

  SerialCable* cable_;  // null when it has gone
  int loss_ = EIO;
  Awaited awaited_ = Awaited::bytes;
  std::function<void()> call_;
  Timeout turn_;
};

std::unique_ptr<SerialLine> SerialCable::plug() {
  auto line = std::make_unique<Line>(*this);
  if (line_) line_->cut();
  line_ = line.get();
  gone_ = false;
  open_ = false;
  change_dtr(false);
  return line;
}

void SerialCable::unplug() {
  gone_ = true;
  open_ = false;
  change_dtr(false);
  if (auto* line = std::exchange(line_, nullptr)) {
    line->cut();
    line->ready();
  }
}

void SerialCable::send(std::string_view bytes) {
  if (!open_ || gone_) return;
  arrived_ += bytes;
  ready();
}

void SerialCable::hold_up(bool on) {
  held_up_ = on;
  ready();
}

void SerialCable::change_dtr(bool on) {
  if (std::exchange(dtr_, on) != on && dtr_listener_) dtr_listener_(on);
}

void SerialCable::ready() {
  if (line_) line_->ready();
}

}  // namespace zemblar::simulator

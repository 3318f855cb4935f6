// Serial lines of the system: termios and the modem-line requests of its terminal driver.

#include <fcntl.h>
#include <glibmm/main.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "devices/port/serial_line.h"
#include "runtime/scoped_connection.h"

namespace zemblar {
namespace {

speed_t speed_of(unsigned baud) {
  static constexpr std::pair<unsigned, speed_t> speeds[] = {
      {50, B50},       {75, B75},         {110, B110},      {134, B134},     {150, B150},
      {200, B200},     {300, B300},       {600, B600},      {1200, B1200},   {1800, B1800},
      {2400, B2400},   {4800, B4800},     {9600, B9600},    {19200, B19200}, {38400, B38400},
      {57600, B57600}, {115200, B115200}, {230400, B230400}};
  for (const auto& [number, speed] : speeds) {
    if (number == baud) return speed;
  }
  return B0;
}

tcflag_t character_flags(const LineSettings& settings) {
  static constexpr tcflag_t sizes[] = {CS5, CS6, CS7, CS8};
  static constexpr tcflag_t parities[] = {0, PARENB, PARENB | PARODD, PARENB | PARODD | CMSPAR,
                                          PARENB | CMSPAR};
  auto flags = sizes[settings.data_bits - 5] | parities[static_cast<int>(settings.parity)];
  if (settings.stop_bits == 2) flags |= CSTOPB;
  if (settings.flow == Flow::Hard) flags |= CRTSCTS;
  return flags;
}

/// Raw mode. A read returns at least one byte, so that 0 bytes mean the end and not a pause.
termios with_settings(termios state, const LineSettings& settings) {
  cfmakeraw(&state);
  state.c_iflag &= static_cast<tcflag_t>(~(IXON | IXOFF | IXANY | INPCK));
  if (settings.flow == Flow::Soft) state.c_iflag |= IXON | IXOFF;
  state.c_cflag &= static_cast<tcflag_t>(~(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS));
  state.c_cflag |= character_flags(settings) | CREAD | CLOCAL;
  state.c_cc[VMIN] = 1;
  state.c_cc[VTIME] = 0;
  cfsetispeed(&state, speed_of(settings.baud));
  cfsetospeed(&state, speed_of(settings.baud));
  return state;
}

class TtyLine : public SerialLine {
 public:
  ~TtyLine() override { TtyLine::close(); }

  int open(const std::string& name, const LineSettings& settings) override {
    fd_ = ::open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0) return errno;
    const auto error = take(settings);
    if (error != 0) close();
    return error;
  }

  int configure(const LineSettings& settings) override {
    const auto state = with_settings(found_, settings);
    return tcsetattr(fd_, TCSANOW, &state) == 0 ? 0 : errno;
  }

  void close() override {
    stop_watching();
    if (fd_ < 0) return;
    if (taken_) {
      // Discards unsent bytes, which would make close() wait.
      tcflush(fd_, TCIOFLUSH);
      tcsetattr(fd_, TCSANOW, &found_);
      ioctl(fd_, TIOCNXCL);
      // Releases the lock, which a copy of the descriptor in another process would keep.
      flock(fd_, LOCK_UN);
    }
    taken_ = false;
    ::close(std::exchange(fd_, -1));
  }

  Transferred read(void* buffer, std::size_t count) override {
    const auto read = outcome(::read(fd_, buffer, count));
    // The line is ready but returns no bytes: it has hung up.
    return read.bytes == 0 && read.error == 0 && count > 0 ? Transferred{0, EIO} : read;
  }
  Transferred write(const void* bytes, std::size_t count) override {
    return outcome(::write(fd_, bytes, count));
  }
  void discard_input() override { tcflush(fd_, TCIFLUSH); }

  // Ends the watch with its first call, because a line that has hung up stays ready for ever.
  void watch(Awaited what, std::function<void()> call) override {
    const auto ready = what == Awaited::bytes ? Glib::IO_IN : Glib::IO_OUT;
    const auto once = [call = std::move(call)](Glib::IOCondition) {
      const auto keep = call;
      keep();
      return false;
    };
    watch_ = Glib::signal_io().connect(once, fd_, ready | Glib::IO_HUP | Glib::IO_ERR);
  }
  void stop_watching() override { watch_.disconnect(); }

  int descriptor() const override { return fd_; }

  // On a pseudo-terminal, which has no modem lines, the request fails and all lines count as off.
  ModemLines modem_lines() const override {
    int lines = 0;
    if (ioctl(fd_, TIOCMGET, &lines) != 0) return {};
    return {(lines & TIOCM_DSR) != 0, (lines & TIOCM_RI) != 0, (lines & TIOCM_CD) != 0};
  }
  void set_dtr(bool on) override { drive(TIOCM_DTR, on); }
  void set_rts(bool on) override { drive(TIOCM_RTS, on); }

 private:
  int take(const LineSettings& settings) {
    // The lock also excludes programs of the superuser, which exclusive mode does not.
    if (flock(fd_, LOCK_EX | LOCK_NB) != 0) return EBUSY;
    if (tcgetattr(fd_, &found_) != 0 && tcgetattr(fd_, &found_) != 0) return errno;
    if (ioctl(fd_, TIOCEXCL) != 0) return errno;
    taken_ = true;
    if (const auto error = configure(settings)) return error;
    set_dtr(false);
    if (settings.flow != Flow::Hard) set_rts(false);
    tcflush(fd_, TCIOFLUSH);
    return 0;
  }

  void drive(int line, bool on) const { ioctl(fd_, on ? TIOCMBIS : TIOCMBIC, &line); }

  static Transferred outcome(ssize_t count) {
    if (count >= 0) return {static_cast<std::size_t>(count), 0};
    return {0, errno == EINTR ? EAGAIN : errno};
  }

  int fd_ = -1;
  bool taken_ = false;
  termios found_{};  // restored by `close`
  ScopedConnection watch_;
};

}  // namespace

std::unique_ptr<SerialLine> make_tty_line() {
  return std::make_unique<TtyLine>();
}

}  // namespace zemblar

#include "simulator/stations/console_input.h"

#include <glibmm/main.h>
#include <unistd.h>

#include <array>
#include <iostream>

namespace zemblar::simulator {

ConsoleInput::ConsoleInput(Obey obey) : obey_(std::move(obey)) {
  Glib::signal_io().connect([this](Glib::IOCondition) { return read(); }, STDIN_FILENO,
                            Glib::IO_IN | Glib::IO_HUP);
}

bool ConsoleInput::read() {
  std::array<char, 1024> buffer;
  const auto count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
  if (count <= 0) return false;
  const std::string_view bytes(buffer.data(), static_cast<std::size_t>(count));
  for (const auto& line : input_.feed(bytes)) carry_out(line);
  return true;
}

void ConsoleInput::carry_out(const std::string& line) const {
  try {
    const auto answer = obey_(line);
    if (!answer.empty()) std::cout << answer << std::endl;
  } catch (const std::exception& error) {
    std::cout << error.what() << std::endl;
  }
}

}  // namespace zemblar::simulator

// What assistive technology adds to a letter that is typed into Find.

#include <glibmm/miscutils.h>
#include <glibmm/spawn.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/ratio.h"

namespace zemblar::bench {
namespace {

double letter_among(std::size_t count, const std::string& modules) {
  std::string printed;
  Glib::setenv("GTK_MODULES", modules);
  Glib::spawn_sync({}, std::vector<std::string>{FIND_LETTERS, std::to_string(count)},
                   Glib::SPAWN_STDERR_TO_DEV_NULL, sigc::slot<void>(), &printed);
  Glib::unsetenv("GTK_MODULES");
  if (printed.empty()) throw std::runtime_error("Find is measured on a display");
  return std::stod(printed);
}

const Figure letter("find: a letter among 10,000 rows, with assistive technology to without", "ms",
                    1.5, [](Effort effort) {
                      const auto count = effort.count(10000);
                      return [count] {
                        return Sample{.figure = letter_among(count, "gail:atk-bridge"),
                                      .floor = letter_among(count, "")};
                      };
                    });

}  // namespace
}  // namespace zemblar::bench

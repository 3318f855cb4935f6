#include "simulator/soak/temporary_home.h"

#include <glibmm/miscutils.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

namespace zemblar::simulator {

TemporaryHome::TemporaryHome()
    : path_(Glib::build_filename(Glib::get_tmp_dir(), "zemblar-home-XXXXXX")) {
  if (!::mkdtemp(path_.data())) throw std::runtime_error("no temporary folder");
  Glib::setenv("XDG_CONFIG_HOME", path_ + "/config");
  Glib::setenv("XDG_DATA_HOME", path_ + "/data");
}

TemporaryHome::~TemporaryHome() {
  std::filesystem::remove_all(path_);
}

}  // namespace zemblar::simulator

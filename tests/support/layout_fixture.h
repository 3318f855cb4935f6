#pragma once

#include <glib/gstdio.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>
#include <gtest/gtest.h>

#include <string>

#include "core/layout.h"
#include "core/status.h"

namespace zemblar::test {

/// An empty folder that goes with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(Glib::build_filename(Glib::get_tmp_dir(), "zemblar-test-XXXXXX")) {
    g_mkdtemp(path_.data());
  }
  ~TemporaryFolder() { [[maybe_unused]] const int rc = system(("rm -rf '" + path_ + "'").c_str()); }

  [[nodiscard]] std::string file(const std::string& name) const {
    return Glib::build_filename(path_, name);
  }
  std::string write(const std::string& name, const std::string& bytes) const {
    Glib::file_set_contents(file(name), bytes);
    return file(name);
  }
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

inline std::string bytes_of(const std::string& path) {
  return Glib::file_get_contents(path);
}

/// The current layout with a new document, as the program begins with.
inline Layout& fresh_layout() {
  Layout::get().new_document(true);
  return Layout::get();
}

/// A current layout with an empty document, for the length of a test.
class LayoutTest : public testing::Test {
 protected:
  LayoutTest() {
    Layout::get(new Layout).new_document(false);
    clear_status();
  }
  ~LayoutTest() override { Layout::get().destroy(); }

  static Layout& layout() { return Layout::get(); }
  TemporaryFolder folder;
};

}  // namespace zemblar::test

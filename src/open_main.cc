// Opens a layout file in the running program, or starts the program with the file.

#include <giomm/file.h>
#include <giomm/init.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "core/global_options.h"
#include "core/i18n.h"
#include "core/instance.h"
#include "core/status.h"

namespace {

constexpr int usage_error = 2;

void complain(const Glib::ustring& message) {
  std::cerr << "zemblar-open: " << message.raw() << '\n';
}

/// The path of the program that was installed, or built, with this one.
std::string program_path() {
  return std::filesystem::read_symlink("/proc/self/exe").replace_filename("zemblar").string();
}

int start_program() {
  const auto program = program_path();
  ::execl(program.c_str(), program.c_str(), nullptr);
  complain(Glib::ustring::compose(_("Cannot start %1: %2"), zemblar::readable(program),
                                  std::strerror(errno)));
  return 1;
}

int open_file(const std::string& argument) {
  const auto path = Gio::File::create_for_commandline_arg(argument)->get_path();
  if (path.empty() || !Glib::file_test(path, Glib::FILE_TEST_IS_REGULAR)) {
    complain(Glib::ustring::compose(_("There is no file %1."), zemblar::readable(argument)));
    return 1;
  }
  const zemblar::Instance instance(zemblar::Instance::Kind::opener);
  if (instance.pass_on({.file = path})) return 0;
  zemblar::GlobalOptions::get().set_layout(path);
  if (const auto problem = zemblar::get_status(); !problem.empty()) {
    complain(problem);
    return 1;
  }
  return start_program();
}

}  // namespace

int main(int argc, char** argv) {
  zemblar::set_up_language();
  Gio::init();
  const std::string argument = argc > 1 ? argv[1] : "";
  if (argc > 2 || (argument.starts_with("-") && argument != "--help" && argument != "-h")) {
    complain(_("One layout file can be opened: zemblar-open FILE"));
    return usage_error;
  }
  if (argument == "--help" || argument == "-h") {
    std::cout << _(
        "Usage: zemblar-open FILE\n\nOpens the layout file in the Zemblar that runs, "
        "or starts Zemblar with it.\n");
    return 0;
  }
  return argument.empty() ? start_program() : open_file(argument);
}

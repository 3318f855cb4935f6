// Types a name into Find above the list of many objects, and prints how many milliseconds a letter
// takes until the list is whole: once as it is, once with the toolkit's modules for assistive
// technology, to see what these add.

#include <gtkmm/main.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/window.h>

#include <cstdio>
#include <cstdlib>

#include "benchmarks/layout_scene.h"
#include "ui/toolkit/stock.h"
#include "ui/windows/object_list.h"

namespace {

void settle() {
  while (Gtk::Main::events_pending()) Gtk::Main::iteration();
}

}  // namespace

int main(int argc, char** argv) {
  using namespace zemblar;
  Gtk::Main toolkit(argc, argv);
  bench::fill_with_loks(argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10000);
  Gtk::Window window;
  Gtk::ScrolledWindow scrolled;
  ObjectList list;
  scrolled.add(list);
  window.add(scrolled);
  window.set_default_size(400, 700);
  window.show_all();
  settle();
  // Every name has them, so that all rows come again with each; and they are taken out again.
  const auto spent = bench::milliseconds([&] {
    for (const char* typed : {"o", "on", ""}) {
      list.set_filter(typed);
      settle();
    }
  });
  std::printf("%.3f\n", spent / 3);
  std::fflush(stdout);
  std::_Exit(0);  // how the toolkit takes itself down is not looked at
}

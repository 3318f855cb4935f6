// The least that a program with the same toolkit can do at its start: show an empty window.

#include <gtkmm/main.h>
#include <gtkmm/window.h>

int main(int argc, char** argv) {
  Gtk::Main toolkit(argc, argv);
  Gtk::Window window;
  window.set_title("Bare Window");
  Gtk::Main::run(window);
}

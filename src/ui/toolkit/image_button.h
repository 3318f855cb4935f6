#pragma once

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/image.h>
#include <gtkmm/label.h>
#include <sigc++/signal.h>

#include <memory>
#include <string>

namespace zemblar {

class FileChooser;

/// Shows the chosen picture file, lets the user choose another one, and has a button that chooses
/// none. For a file that is missing or is no picture, the name is shown.
class ImageButton : public Gtk::HBox {
 public:
  /// `name` is the name for screen readers.
  explicit ImageButton(const Glib::ustring& name);
  ~ImageButton() override;

  [[nodiscard]] const std::string& get_path() const { return path_; }
  /// Does not emit `signal_chosen`.
  void set_path(const std::string& path);
  /// The user has chosen another path, or none.
  sigc::signal<void, const std::string&>& signal_chosen() { return signal_chosen_; }

  [[nodiscard]] Gtk::Button& choose_button() { return choose_; }
  [[nodiscard]] Gtk::Button& clear_button() { return clear_; }

 private:
  void on_choose();
  void on_response(int response);
  void preview();
  void choose(const std::string& path);

  std::string path_;
  Glib::ustring title_;
  Gtk::Image picture_;
  Gtk::Label label_;
  Gtk::Button choose_;
  Gtk::Button clear_;
  std::unique_ptr<FileChooser> dialog_;
  Gtk::Image preview_;
  sigc::signal<void, const std::string&> signal_chosen_;
};

}  // namespace zemblar

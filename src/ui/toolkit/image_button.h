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

/// Shows which picture file is chosen, lets a person choose another, and has a button that chooses
/// none. A file that is missing or holds no picture keeps its name.
class ImageButton : public Gtk::HBox {
 public:
  /// `name` is what screen readers call it.
  explicit ImageButton(const Glib::ustring& name);
  ~ImageButton() override;

  [[nodiscard]] const std::string& get_path() const { return path_; }
  /// Does not emit `signal_chosen`.
  void set_path(const std::string& path);
  /// A person has chosen another path, or none.
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

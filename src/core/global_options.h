#pragma once

#include <glibmm/object.h>
#include <glibmm/propertyproxy.h>

#include <string>

namespace zemblar {

/// The settings that the program keeps from one run to the next: the absolute path of the layout
/// file that was opened or saved last, empty when there is none; whether trains keep running when
/// the program is quit; whether points under trains are protected; and the grid of drawings.
///
/// They are in `zemblar/options.ini` in the user's configuration directory, the path as a URI
/// because a path need not be UTF-8. A setting is stored at once; when that fails the status line
/// says so and the program continues.
class GlobalOptions : public Glib::Object {
 public:
  /// The one instance; made on first use and never destroyed.
  static GlobalOptions& get();

  /// Reads the file. A setting that is missing there or damaged stays as it is.
  void load();

  [[nodiscard]] const std::string& get_layout() const { return layout_; }
  void set_layout(const std::string& path);
  Glib::PropertyProxy<std::string> property_layout() { return {this, "layout"}; }
  [[nodiscard]] bool get_trains_go_on() const { return trains_go_on_; }
  void set_trains_go_on(bool go_on);
  Glib::PropertyProxy<bool> property_trains_go_on() { return {this, "trains-go-on"}; }
  /// See track/point_guard.h.
  [[nodiscard]] bool get_points_protected() const { return points_protected_; }
  void set_points_protected(bool is_protected);
  Glib::PropertyProxy<bool> property_points_protected() { return {this, "points-protected"}; }
  /// Distance between two lines of the grid, in diagram units; 0 for no grid.
  static constexpr unsigned usual_grid = 10;
  static constexpr unsigned widest_grid = 1000;
  [[nodiscard]] unsigned get_grid() const { return grid_; }
  void set_grid(unsigned step);
  Glib::PropertyProxy<unsigned> property_grid() { return {this, "grid"}; }

 private:
  GlobalOptions();
  void store() const;

  std::string layout_;
  bool trains_go_on_ = false;
  bool points_protected_ = false;
  unsigned grid_ = usual_grid;
};

}  // namespace zemblar

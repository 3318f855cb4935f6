#include "ui/panels/view_properties.h"

#include <atkmm/object.h>
#include <gtkmm/box.h>

#include "core/i18n.h"
#include "core/property.h"
#include "ui/toolkit/form.h"

namespace zemblar {
namespace {

constexpr int spacing = 6;
constexpr int row_spacing = 4;
constexpr int column_spacing = 8;
constexpr double largest_extent = 65536;

const PanelRegistration<View, ViewProperties> registration;

}  // namespace

ViewProperties::ViewProperties(View& view, const Glib::RefPtr<Gtk::SizeGroup>& labels)
    : view_(view),
      labels_(labels),
      name_(view),
      image_(_("Background Image")),
      width_(0, 0, largest_extent, 1, 10),
      height_(0, 0, largest_extent, 1, 10),
      width_spin_(width_),
      height_spin_(height_),
      from_image_(_("Set From _Image"), true) {
  set_border_width(spacing);
  set_row_spacings(row_spacing);
  set_col_spacings(column_spacing);
  add_row(_("_Name:"), name_, name_);
  add_row(_("Background _Colour:"), colour_, colour_);
  add_row(_("_Background Image:"), image_, image_);
  add_row(_("Table Si_ze:"), size_row(), width_spin_);
  attach(from_image_, 1, 2, rows_, rows_ + 1, Gtk::EXPAND | Gtk::FILL, Gtk::FILL);
  ++rows_;
  add_row(_("_Hidden:"), hidden_, hidden_);
  describe_controls();
  bind_property(view, "colour", colour_, "color");
  bind_property(view, "width", width_spin_, "value");
  bind_property(view, "height", height_spin_, "value");
  bind_property(view, "hidden", hidden_, "active");
  image_.signal_chosen().connect([&view](const std::string& path) { view.set_image(path); });
  image_changed_ = view.signal_image_changed().connect([this] { follow_image(); });
  follow_image();
}

void ViewProperties::add_row(const Glib::ustring& label, Gtk::Widget& content,
                             Gtk::Widget& access) {
  auto* text = Gtk::manage(new Gtk::Label(label, 0.0, 0.5, true));
  text->set_mnemonic_widget(access);
  labels_->add_widget(*text);
  attach(*text, 0, 1, rows_, rows_ + 1, Gtk::FILL, Gtk::FILL);
  attach(content, 1, 2, rows_, rows_ + 1, Gtk::EXPAND | Gtk::FILL, Gtk::FILL);
  ++rows_;
}

Gtk::Widget& ViewProperties::size_row() {
  from_image_.signal_clicked().connect(sigc::mem_fun(*this, &ViewProperties::set_size_from_image));
  auto* spins = Gtk::manage(new Gtk::HBox(false, spacing));
  spins->pack_start(width_spin_, Gtk::PACK_EXPAND_WIDGET);
  spins->pack_start(*Gtk::manage(new Gtk::Label("×")), Gtk::PACK_SHRINK);
  spins->pack_start(height_spin_, Gtk::PACK_EXPAND_WIDGET);
  return *spins;
}

void ViewProperties::describe_controls() {
  width_spin_.get_accessible()->set_name(_("Table Width"));
  height_spin_.get_accessible()->set_name(_("Table Height"));
  const auto size_hint =
      _("In pixels at zoom 1. The file keeps a table size only through a background image.");
  width_spin_.set_tooltip_text(size_hint);
  height_spin_.set_tooltip_text(size_hint);
  hidden_.set_tooltip_text(_("Leave this view out of the track view"));
}

void ViewProperties::follow_image() {
  const auto& image = view_.image();
  image_.set_path(image.pixbuf() ? image.file() : image.wanted().file());
  from_image_.set_sensitive(bool(image.pixbuf()));
}

void ViewProperties::set_size_from_image() {
  width_spin_.set_value(view_.image().width());
  height_spin_.set_value(view_.image().height());
}

}  // namespace zemblar

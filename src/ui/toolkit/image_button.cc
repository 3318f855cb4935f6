#include "ui/toolkit/image_button.h"

#include <glibmm/convert.h>
#include <glibmm/miscutils.h>
#include <gtkmm/stock.h>

#include "core/i18n.h"
#include "core/layout.h"
#include "ui/toolkit/file_chooser.h"
#include "ui/toolkit/picture.h"

namespace zemblar {
namespace {

constexpr int thumbnail = 24;  // pixels
constexpr int preview_size = 160;

void offer_pictures(Gtk::FileChooser& chooser) {
  Gtk::FileFilter pictures;
  pictures.set_name(_("Pictures"));
  pictures.add_pixbuf_formats();
  chooser.add_filter(pictures);
}

}  // namespace

ImageButton::ImageButton(const Glib::ustring& name) : Gtk::HBox(false, 4), title_(name) {
  label_.set_alignment(0, 0.5);
  label_.set_ellipsize(Pango::ELLIPSIZE_MIDDLE);
  label_.set_width_chars(12);
  auto* row = Gtk::manage(new Gtk::HBox(false, 4));
  row->pack_start(picture_, false, false);
  row->pack_start(label_, true, true);
  choose_.add(*row);
  // A character, because an icon may be missing from the theme.
  clear_.add_label("×");
  clear_.get_accessible()->set_name(Glib::ustring::compose(_("Clear %1"), name));
  clear_.set_tooltip_text(_("No picture"));
  pack_start(choose_, true, true);
  pack_start(clear_, false, false);
  choose_.signal_clicked().connect(sigc::mem_fun(*this, &ImageButton::on_choose));
  clear_.signal_clicked().connect([this] { choose(""); });
  // The access key of the row's label activates this box, which focuses the button.
  signal_mnemonic_activate().connect(
      [this](bool cycling) { return choose_.mnemonic_activate(cycling); }, false);
  set_path("");
  show_all_children();
}

ImageButton::~ImageButton() = default;

void ImageButton::set_path(const std::string& path) {
  path_ = path;
  const auto name =
      path.empty() ? Glib::ustring(_("(None)")) : Glib::filename_display_basename(path);
  label_.set_text(name);
  choose_.get_accessible()->set_name(title_ + ": " + name);
  choose_.set_tooltip_text(Glib::filename_display_name(path));
  clear_.set_sensitive(!path.empty());
  if (const auto picture = load_picture(path, thumbnail)) {
    picture_.set(picture);
  } else if (path.empty()) {
    picture_.clear();
  } else {
    picture_.set(Gtk::Stock::MISSING_IMAGE, Gtk::ICON_SIZE_MENU);
  }
}

void ImageButton::choose(const std::string& path) {
  set_path(path);
  signal_chosen_.emit(path);
}

void ImageButton::on_choose() {
  dialog_ = std::make_unique<FileChooser>(title_, Gtk::FILE_CHOOSER_ACTION_OPEN);
  if (auto* window = dynamic_cast<Gtk::Window*>(get_toplevel())) {
    dialog_->set_transient_for(*window);
  }
  dialog_->set_modal();
  dialog_->add_button(Gtk::Stock::CANCEL, Gtk::RESPONSE_CANCEL);
  dialog_->add_button(Gtk::Stock::OPEN, Gtk::RESPONSE_ACCEPT);
  dialog_->set_default_response(Gtk::RESPONSE_ACCEPT);
  offer_pictures(*dialog_);
  dialog_->set_preview_widget(preview_);
  dialog_->signal_update_preview().connect(sigc::mem_fun(*this, &ImageButton::preview));
  dialog_->signal_response().connect(sigc::mem_fun(*this, &ImageButton::on_response));
  if (!path_.empty()) {
    dialog_->set_filename(path_);
  } else if (const auto file = Layout::get().get_file(); file && file->is_native()) {
    dialog_->set_current_folder(file->get_parent()->get_path());
  }
  dialog_->show();
}

void ImageButton::on_response(int response) {
  const std::string path = dialog_->get_filename();
  dialog_->hide();
  if (response == Gtk::RESPONSE_ACCEPT && !path.empty()) choose(path);
}

void ImageButton::preview() {
  const auto picture = load_picture(dialog_->get_preview_filename(), preview_size);
  if (picture) preview_.set(picture);
  dialog_->set_preview_widget_active(static_cast<bool>(picture));
}

}  // namespace zemblar

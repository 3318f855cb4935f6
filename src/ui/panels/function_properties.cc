#include "ui/panels/function_properties.h"

#include <algorithm>

#include "core/i18n.h"
#include "core/string_pool.h"
#include "locomotives/lok.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

const PanelRegistration<Function, FunctionProperties> registration;

Glib::ustring type_name(Function::Type type) {
  switch (type) {
    case Function::Type::Toggle:
      return _("Toggle Function");
    case Function::Type::Pulse:
      return _("Pulse Function");
    case Function::Type::Trigger:
      return _("Trigger Function");
    case Function::Type::Script:
      return _("Script Function");
  }
  return {};
}

Glib::ustring decoder_name(const Lok& lok, unsigned index) {
  return Glib::ustring::compose(_("Decoder %1 (address %2)"), index + 1,
                                lok.get_decoders()[index]->get_address().get_addr());
}

}  // namespace

FunctionProperties::FunctionProperties(Function& function, const Labels& labels)
    : Form(labels),
      function_(&function),
      name_(function),
      hidden_(_("_Hide in the Throttle"), true),
      off_image_(_("Off Image")),
      on_image_(_("On Image")) {
  name_.offer(function_names());
  number_.set_digits(0);
  number_.set_numeric();
  number_.set_increments(1, 5);
  number_.set_range(0, Function::max_function);
  type_.set_tooltip_text(
      _("A toggle function stays as it is set; a pulse function goes off again at once"));
  add_rows();
  follow_decoders();
  follow();
  connect();
}

void FunctionProperties::add_rows() {
  add_row(_("_Name:"), name_);
  add_row(_("T_ype:"), type_);
  add_row(_("_Decoder:"), decoder_);
  add_row(_("_Function:"), number_, _("(0 to 28)"));
  add_row(_("O_ff Image:"), off_image_);
  add_row(_("_On Image:"), on_image_);
  add_field(hidden_);
  hidden_.set_tooltip_text(_("Until the layout is closed: a layout file does not keep it"));
}

void FunctionProperties::connect() {
  const auto follows = [this](auto proxy) {
    connections_.emplace_back(proxy.signal_changed().connect([this] { follow(); }));
  };
  follows(function_->property_type());
  follows(function_->property_decoder());
  follows(function_->property_function());
  follows(function_->property_hidden());
  follows(function_->property_on_image());
  follows(function_->property_off_image());
  connections_.emplace_back(function_->get_lok()->signal_decoders_changed().connect(
      sigc::mem_fun(*this, &FunctionProperties::follow_decoders)));

  const auto on = [this](auto signal, auto action) {
    signal.connect([this, action] {
      if (function_ && !updating_) action(*function_);
    });
  };
  on(type_.signal_changed(), [this](Function& function) {
    const int row = type_.get_active_row_number();
    if (row >= 0) function.set_type(types_[static_cast<unsigned>(row)]);
  });
  on(decoder_.signal_changed(), [this](Function& function) {
    const int row = decoder_.get_active_row_number();
    if (row >= 0) function.set_decoder(static_cast<unsigned>(row));
  });
  on(number_.signal_value_changed(), [this](Function& function) {
    function.set_function(static_cast<unsigned>(number_.get_value_as_int()));
  });
  on(hidden_.signal_toggled(),
     [this](Function& function) { function.set_hidden(hidden_.get_active()); });
  off_image_.signal_chosen().connect([this](const std::string& path) {
    if (function_) function_->set_off_image(path);
  });
  on_image_.signal_chosen().connect([this](const std::string& path) {
    if (function_) function_->set_on_image(path);
  });
}

void FunctionProperties::follow() {
  if (!function_) return;
  const UpdateGuard scope(updating_);
  follow_type();
  decoder_.set_active(static_cast<int>(function_->get_decoder()));
  show_value(number_, function_->get_function());
  show_active(hidden_, function_->get_hidden());
  off_image_.set_path(function_->off_picture().file());
  on_image_.set_path(function_->on_picture().file());
}

void FunctionProperties::follow_type() {
  const auto type = function_->get_type();
  auto types = std::vector{Function::Type::Toggle, Function::Type::Pulse};
  if (std::find(types.begin(), types.end(), type) == types.end()) types.push_back(type);
  if (types != types_) {
    types_ = types;
    type_.remove_all();
    for (const auto each : types_) type_.append(type_name(each));
  }
  const auto row = std::find(types_.begin(), types_.end(), type) - types_.begin();
  type_.set_active(static_cast<int>(row));
}

void FunctionProperties::follow_decoders() {
  decoders_changed_.clear();
  if (!function_) return;
  for (const auto& decoder : function_->get_lok()->get_decoders()) {
    decoders_changed_.emplace_back(decoder->signal_changed().connect([this] { show_decoders(); }));
  }
  show_decoders();
}

void FunctionProperties::show_decoders() {
  if (!function_) return;
  const UpdateGuard scope(updating_);
  const auto& lok = *function_->get_lok();
  decoder_.remove_all();
  for (unsigned i = 0; i < lok.get_decoders().size(); ++i) decoder_.append(decoder_name(lok, i));
  decoder_.set_active(static_cast<int>(function_->get_decoder()));
  decoder_.set_sensitive(lok.get_decoders().size() > 1);
}

}  // namespace zemblar

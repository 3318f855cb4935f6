#include "ui/panels/point_state_properties.h"

#include <glibmm/main.h>

#include "core/i18n.h"
#include "track/point_base.h"
#include "track/signal.h"
#include "ui/panels/point_output_properties.h"
#include "ui/toolkit/update_guard.h"
#include "ui/toolkit/widget_end.h"

namespace zemblar {
namespace {

using Type = PointOutput::Type;

const PanelRegistration<PointState, PointStateProperties> point_registration;
const PanelRegistration<SignalState, PointStateProperties> signal_registration;

constexpr int column_gap = 12;
constexpr int row_gap = 4;
constexpr double widest_angle = 180;

void attach_heading(Gtk::Table& table, unsigned column, const Glib::ustring& text) {
  auto* heading = Gtk::manage(new Gtk::Label(text));
  heading->set_alignment(0, 0.5);
  table.attach(*heading, column, column + 1, 0, 1, Gtk::FILL, Gtk::FILL);
}

}  // namespace

// --- One output ---

OutputAction::OutputAction(PointState& state, const Glib::RefPtr<PointOutput>& output)
    : state_(&state), output_(output), type_(output->get_type()), action_(false, row_gap) {
  enabled_.set_tooltip_text(
      _("Whether this output matters in this state, for your own notes: it is commanded in "
        "either case"));
  fill_choice();
  if (!is_choice()) set_range();
  if (type_ == Type::Servo) {
    before_.set_text_with_mnemonic(_("_Angle:"));
    before_.set_mnemonic_widget(number_);
    unit_.set_text(_("°"));
    action_.pack_start(before_, false, false);
  }
  if (is_choice()) {
    action_.pack_start(choice_, false, false);
  } else {
    action_.pack_start(number_, false, false);
  }
  action_.pack_start(unit_, false, false);
  follow();
  connect();
}

bool OutputAction::is_choice() const {
  return type_ == Type::Basic || type_ == Type::Function;
}

void OutputAction::fill_choice() {
  choice_.append(type_ == Type::Function ? _("Off") : _("Left"));
  choice_.append(type_ == Type::Function ? _("On") : _("Right"));
}

void OutputAction::set_range() {
  number_.set_numeric();
  if (type_ == Type::Servo) {
    number_.set_digits(1);
    number_.set_increments(1, 10);
    number_.set_range(-widest_angle, widest_angle);
  } else {
    number_.set_digits(0);
    number_.set_increments(1, 10);
    number_.set_range(0, PointStateOutput::max_extended);
    unit_.set_text(_("(0 to 63)"));
  }
}

void OutputAction::attach_to(Gtk::Table& table, unsigned row) {
  table.attach(enabled_, 0, 1, row, row + 1, Gtk::FILL, Gtk::FILL);
  table.attach(action_, 1, 2, row, row + 1, Gtk::FILL, Gtk::FILL);
}

void OutputAction::connect() {
  // Each control changes only its own value, since another value may be outside its range.
  const auto on = [this](auto signal, auto change) {
    signal.connect([this, change] {
      if (!state_ || updating_) return;
      auto setting = state_->get_setting(*output_.operator->());
      change(setting);
      state_->set_setting(*output_.operator->(), setting);
    });
  };
  on(enabled_.signal_toggled(),
     [this](PointStateOutput& setting) { setting.enabled = enabled_.get_active(); });
  on(choice_.signal_changed(), [this](PointStateOutput& setting) {
    const bool second = choice_.get_active_row_number() == 1;
    if (type_ == Type::Function) {
      setting.function = second;
    } else {
      setting.basic = second ? 1 : 0;
    }
  });
  on(number_.signal_value_changed(), [this](PointStateOutput& setting) {
    const auto number = number_.get_value();
    if (type_ == Type::Servo) {
      if (!shows_value(number_, setting.servo)) setting.servo = static_cast<float>(number);
    } else {
      setting.extended = static_cast<std::uint8_t>(number);
    }
  });
}

void OutputAction::follow() {
  if (!state_ || is_outdated()) return;
  const UpdateGuard scope(updating_);
  const auto text = output_text(*output_.operator->());
  const auto& setting = state_->get_setting(*output_.operator->());
  enabled_.set_label(text);
  const auto name = Glib::ustring::compose(_("Action at %1"), text);
  choice_.get_accessible()->set_name(name);
  number_.get_accessible()->set_name(name);
  show_active(enabled_, setting.enabled);
  choice_.set_active((type_ == Type::Function ? setting.function : setting.basic != 0) ? 1 : 0);
  show_value(number_, type_ == Type::Servo ? setting.servo : setting.extended);
}

// --- The panel ---

PointStateProperties::PointStateProperties(PointState& state, const Labels& labels)
    : Form(labels), state_(&state), name_(state), image_(_("Image")), table_(1, 2) {
  table_.set_col_spacings(column_gap);
  table_.set_row_spacings(row_gap);
  add_row(_("_Name:"), name_);
  // A point's panel contains several name fields, so each is named for screen readers.
  name_.get_accessible()->set_name(
      Glib::ustring::compose(_("Name of state %1"), state.get_position() + 1));
  add_image();
  add_wide(table_);
  show_actions();
  connect();
}

void PointStateProperties::add_image() {
  auto* state = dynamic_cast<SignalState*>(state_.get());
  if (!state) return;
  add_row(_("_Image:"), image_);
  image_.set_path(state->picture().file());
  image_.signal_chosen().connect([this](const std::string& path) {
    if (state_) dynamic_cast<SignalState&>(*state_).set_image(path);
  });
  image_changed_ = state->property_image().signal_changed().connect(
      [this, state] { image_.set_path(state->picture().file()); });
}

void PointStateProperties::connect() {
  list_changed_ = state_->get_owner()->signal_outputs_changed().connect([this] {
    show_soon_ = Glib::signal_idle().connect([this] { return show_actions(), false; });
  });
  setting_changed_ = state_->signal_setting_changed().connect([this] { follow(); });
}

void PointStateProperties::show_actions() {
  actions_.clear();
  outputs_changed_.clear();
  end_children(table_);
  if (!state_) return;
  const auto& outputs = state_->get_owner()->get_outputs();
  table_.resize(static_cast<guint>(outputs.size()) + 1, 2);
  attach_heading(table_, 0, outputs.empty() ? _("No output: nothing is sent") : _("Decoder"));
  if (!outputs.empty()) attach_heading(table_, 1, _("Action"));
  for (const auto& output : outputs) {
    actions_.push_back(std::make_unique<OutputAction>(*state_, output));
    actions_.back()->attach_to(table_, static_cast<unsigned>(actions_.size()));
    outputs_changed_.emplace_back(output->signal_changed().connect([this] { follow(); }));
  }
  table_.show_all();
}

// Rebuilds later, because the signal may come from the control that is replaced.
void PointStateProperties::follow() {
  bool outdated = false;
  for (const auto& action : actions_) {
    action->follow();
    outdated = outdated || action->is_outdated();
  }
  if (!outdated) return;
  show_soon_ = Glib::signal_idle().connect([this] { return show_actions(), false; });
}

}  // namespace zemblar

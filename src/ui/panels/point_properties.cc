#include "ui/panels/point_properties.h"

#include <glibmm/main.h>
#include <gtkmm/cellrenderertext.h>
#include <gtkmm/separator.h>

#include <utility>

#include "core/i18n.h"
#include "core/layout.h"
#include "track/point.h"
#include "track/point_guard.h"
#include "track/scissor.h"
#include "track/signal.h"
#include "ui/panels/point_output_properties.h"
#include "ui/panels/point_state_properties.h"
#include "ui/toolkit/focus_place.h"
#include "ui/toolkit/key_place.h"
#include "ui/toolkit/new_button.h"
#include "ui/toolkit/update_guard.h"
#include "ui/toolkit/widget_end.h"

namespace zemblar {
namespace {

/// The panel of all points and signals.
class PointToplevelProperties : public Form {
 public:
  PointToplevelProperties(PointToplevel& points, const Labels& labels) : Form(labels) {
    add_new_button<Point>(*this, _("New _Point"), points);
    add_new_button<Signal>(*this, _("New Si_gnal"), points);
    add_new_button<Scissor>(*this, _("New S_cissor Point"), points);
  }
};

const PanelRegistration<Point, PointProperties> point_registration;
const PanelRegistration<Signal, PointProperties> signal_registration;
const PanelRegistration<Scissor, PointProperties> scissor_registration;
const PanelRegistration<PointToplevel, PointToplevelProperties> toplevel_registration;

constexpr int form_gap = 8;
constexpr int state_width = 15;  // characters; longer names end in an ellipsis

/// Packs a button with its natural width.
void pack_button(Gtk::Box& box, Gtk::Button& button) {
  auto* row = Gtk::manage(new Gtk::HBox);
  row->pack_start(button, false, false);
  box.pack_start(*row, false, false);
}

}  // namespace

PointProperties::PointProperties(PointBase& point, const Labels& labels)
    : Form(labels),
      point_(&point),
      name_(point),
      send_again_(_("Send _Again"), true),
      add_state_(_("A_dd State"), true),
      add_output_(_("Add _Output"), true) {
  states_.set_spacing(form_gap);
  outputs_.set_spacing(form_gap);
  add_row(_("_Name:"), name_);
  add_state_row();
  add_pages(this->labels());
  show_states();
  show_outputs();
  follow_state();
  connect();
}

void PointProperties::add_state_row() {
  for (auto* cell : state_.get_cells()) {
    auto* text = dynamic_cast<Gtk::CellRendererText*>(cell);
    if (!text) continue;
    text->property_ellipsize() = Pango::ELLIPSIZE_MIDDLE;
    text->property_width_chars() = state_width;
  }
  add_row(_("_State:"), state_);  // a separate row, because a scissor point's state names are long
  auto* under_it = Gtk::manage(new Gtk::HBox);
  under_it->pack_start(send_again_, false, false);
  add_field(*under_it);
  state_.set_tooltip_text(
      _("How it lies now. Another choice is sent at once, also under a train unless points are "
        "protected"));
  send_again_.set_tooltip_text(
      _("For a decoder that had no power, or a point that was moved by hand"));
}

void PointProperties::add_pages(const Labels& labels) {
  const auto add_page = [this, &labels](const Glib::ustring& title) {
    auto* page = Gtk::manage(new Form(labels));
    pages_.append_page(*page, title, true);
    return page;
  };
  auto* states = add_page(_("S_tates"));
  states->add_wide(states_);
  if (!point_->has_fixed_states()) pack_button(*states, add_state_);
  auto* outputs = add_page(_("O_utputs"));
  outputs->add_wide(outputs_);
  pack_button(*outputs, add_output_);
  if (!dynamic_cast<Signal*>(point_.get())) {
    occupancy_ = std::make_unique<BlockRows>(*point_);
    occupancy_->add_to(*add_page(_("Occu_pancy")));
  }
  add_wide(pages_);
}

void PointProperties::connect() {
  state_.signal_changed().connect([this] {
    const int row = state_.get_active_row_number();
    if (!point_ || updating_ || row < 0) return;
    const auto states = point_->states();
    if (static_cast<unsigned>(row) >= states.size()) return;
    set_by_hand(*point_, *states[static_cast<unsigned>(row)], is_shift_held());
    follow_state();  // a protected point has stayed as it is
  });
  send_again_.signal_clicked().connect([this] {
    if (point_ && point_->get_state()) point_->get_state()->send();
  });
  add_state_.signal_clicked().connect([this] {
    if (point_) point_->add_state();
    if (show_soon_.connected()) extended_ = &states_;
  });
  add_output_.signal_clicked().connect([this] {
    if (point_) point_->add_output();
    if (show_soon_.connected()) extended_ = &outputs_;
  });
  const auto states_changed = [this](Object* /*child*/) {
    follow_state();
    show_soon();
  };
  connections_.emplace_back(point_->signal_child_added().connect(states_changed));
  connections_.emplace_back(point_->signal_child_removed().connect(states_changed));
  connections_.emplace_back(point_->signal_outputs_changed().connect([this] { show_soon(); }));
  connections_.emplace_back(point_->signal_state_changed().connect([this] { follow_state(); }));
  connections_.emplace_back(Layout::get().signal_object_renamed().connect([this](Object* object) {
    if (point_ && object->get_parent() == point_.get()) follow_state();
  }));
}

void PointProperties::follow_state() {
  if (!point_) return;
  const UpdateGuard scope(updating_);
  state_.remove_all();
  int row = 0;
  for (const auto* state : point_->states()) {
    state_.append(state->get_name());
    if (state == point_->get_state()) state_.set_active(row);
    ++row;
  }
  send_again_.set_sensitive(point_->get_state() != nullptr);
}

// Rebuilds later, because the button that removes a state or an output is in the form that is
// removed.
void PointProperties::show_soon() {
  show_soon_ = Glib::signal_idle().connect([this] {
    show_again();
    return false;
  });
}

void PointProperties::show_again() {
  const FocusPlace among_states(states_);
  const FocusPlace among_outputs(outputs_);
  show_states();
  show_outputs();
  among_states.restore(add_state_);
  among_outputs.restore(add_output_);
  auto* extended = std::exchange(extended_, nullptr);
  if (!extended) return;
  const std::vector<Gtk::Widget*> forms = extended->get_children();
  if (!forms.empty()) focus_added(*forms.back());
}

// --- States ---

void PointProperties::show_states() {
  end_children(states_);
  if (!point_) return;
  for (auto* state : point_->states()) add_state_form(*state);
  states_.show_all();
}

void PointProperties::add_state_form(PointState& state) {
  if (!states_.get_children().empty()) {
    states_.pack_start(*Gtk::manage(new Gtk::HSeparator), false, false);
  }
  auto* form = Gtk::manage(new PointStateProperties(state, labels()));
  form->set_border_width(0);
  states_.pack_start(*form, false, false);
  if (!state.get_deletable()) return;
  auto* remove = Gtk::manage(new Gtk::Button(_("Remove State")));
  const auto going = std::make_shared<ObjectRef<PointState>>(&state);
  remove->signal_clicked().connect([going] {
    if (*going && (*going)->get_deletable()) (*going)->destroy();
  });
  remove->get_accessible()->set_name(
      Glib::ustring::compose(_("Remove state %1"), state.get_position() + 1));
  pack_button(*form, *remove);
}

// --- Outputs ---

void PointProperties::show_outputs() {
  end_children(outputs_);
  if (!point_) return;
  for (unsigned i = 1; i <= point_->get_outputs().size(); ++i) add_output_form(i);
  outputs_.show_all();
}

void PointProperties::add_output_form(unsigned index) {
  const auto output = point_->get_outputs()[index - 1];
  const auto heading = Glib::ustring::compose(_("<b>Output %1:</b>"), index);
  auto* form = Gtk::manage(new PointOutputProperties(output, heading, labels()));
  auto* remove = Gtk::manage(new Gtk::Button(_("Remove Output")));
  remove->signal_clicked().connect([this, output] { remove_output(output); });
  pack_button(*form, *remove);
  outputs_.pack_start(*form, false, false);
}

void PointProperties::remove_output(const Glib::RefPtr<PointOutput>& output) {
  if (!point_) return;
  for (unsigned i = 1; i <= point_->get_outputs().size(); ++i) {
    if (point_->get_outputs()[i - 1] == output) return point_->remove_output(i);
  }
}

}  // namespace zemblar

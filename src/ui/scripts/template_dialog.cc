#include "ui/scripts/template_dialog.h"

#include <atkmm/object.h>
#include <gtkmm/label.h>
#include <gtkmm/stock.h>

#include <algorithm>
#include <string>
#include <utility>

#include "core/i18n.h"
#include "core/layout.h"
#include "locomotives/lok.h"
#include "scripts/script.h"
#include "track/point_base.h"
#include "ui/toolkit/combo_box_text.h"
#include "ui/toolkit/edit_history.h"
#include "ui/toolkit/form.h"
#include "ui/toolkit/made_object.h"
#include "ui/toolkit/object_button.h"
#include "ui/toolkit/spin_button.h"

namespace zemblar {
namespace {

using Kind = TemplateQuestion::Kind;

constexpr int margin = 12;
constexpr int spacing = 8;
constexpr int width_in_characters = 52;
constexpr int state_width = 110;

ObjectChoices block_choices() {
  return {.heading = _("Blocks"),
          .none = _("(None)"),
          .how_to_make = _("No block yet: make one in the track editor under Blocks"),
          .container = []() -> Object& { return Layout::get(); },
          .offers = [](const Object& o) { return dynamic_cast<const Block*>(&o) != nullptr; }};
}

ObjectChoices point_choices() {
  return {.heading = _("Points and Signals"),
          .none = _("(None)"),
          .how_to_make = _("No point or signal yet: make one in the track editor under Points"),
          .container = []() -> Object& { return Layout::get(); },
          .offers = [](const Object& o) { return dynamic_cast<const PointBase*>(&o) != nullptr; }};
}

}  // namespace

/// What is filled in for one question: an object, and perhaps one of its states; or a number.
class TemplateDialog::Field {
 public:
  /// `point_of` has the point of a question for another state of the same point, else null.
  Field(const TemplateQuestion& question, Field* point_of)
      : question_(question), point_of_(point_of) {
    if (question.kind == Kind::number) {
      number_ = Gtk::manage(new SpinButton);
      number_->set_range(0, question.most);
      number_->set_increments(1, 10);
      number_->set_value(question.preset);
      number_->set_activates_default();
      return;
    }
    if (!point_of) {
      button_ = Gtk::manage(new ObjectButton(question.kind == Kind::block ? block_choices()
                                             : question.kind == Kind::lok ? lok_choices()
                                                                          : point_choices()));
      button_->property_object().signal_changed().connect([this] {
        offer_states();
        signal_changed.emit();
      });
    }
    if (question.kind == Kind::point_state) {
      state_ = Gtk::manage(new ComboBoxText);
      state_->set_size_request(state_width, -1);
      state_->set_sensitive(false);
      state_->property_active().signal_changed().connect([this] { signal_changed.emit(); });
    }
  }

  void add_to(Form& form) {
    const Glib::ustring label = _(question_.label);
    if (number_) {
      form.add_row(label, *number_, "");
    } else if (!state_) {
      form.add_row(label, *button_);
    } else if (!button_) {
      form.add_row(label, *state_);
    } else {
      form.add_row(label, *button_, *state_);
      // The label belongs to the button alone.
      std::string name = label;
      std::erase(name, '_');
      state_->get_accessible()->set_name(name);
    }
  }

  [[nodiscard]] TemplateAnswer answer() const {
    return {.block = dynamic_cast<Block*>(object()),
            .state = chosen_state(),
            .lok = dynamic_cast<Lok*>(object()),
            .number = number_ ? number_->get_value() : 0};
  }

  /// Shows the states of the point again, which has been chosen here or in the field before.
  void offer_states() {
    if (!state_) return;
    const auto* point = this->point();
    state_->set_sensitive(point != nullptr);
    state_->remove_all();
    states_.clear();
    shown_ = point;
    if (!point) return;
    states_ = point->states();
    for (const auto* state : states_) state_->append(state->get_name());
    state_->set_active(0);
    differ();
  }
  /// The field before has changed: two states of one point are asked for to be different ones.
  void follow_point() {
    if (point() != shown_) offer_states();
    differ();
  }
  [[nodiscard]] const Field* point_of() const { return point_of_; }

  sigc::signal<void> signal_changed;

 private:
  [[nodiscard]] zemblar::Object* object() const {
    return button_ ? button_->get_object() : nullptr;
  }
  [[nodiscard]] PointBase* point() const {
    return point_of_ ? point_of_->point() : dynamic_cast<PointBase*>(object());
  }
  [[nodiscard]] PointState* chosen_state() const {
    const auto* point = state_ ? this->point() : nullptr;
    const auto row = state_ ? state_->get_active_row_number() : -1;
    if (!point || row < 0) return nullptr;
    const auto states = point->states();
    const auto found = std::ranges::find(states, states_[static_cast<std::size_t>(row)]);
    return found == states.end() ? nullptr : *found;
  }

  void differ() {
    const auto* other = point_of_ ? point_of_->chosen_state() : nullptr;
    if (other && other == chosen_state()) {
      state_->set_active(state_->get_active_row_number() == 0 ? 1 : 0);
    }
  }

  const TemplateQuestion& question_;
  Field* point_of_;
  // The point whose states are offered, and these in their order; both only to compare, since they
  // may have ended.
  const void* shown_ = nullptr;
  std::vector<PointState*> states_;
  ObjectButton* button_ = nullptr;
  ComboBoxText* state_ = nullptr;
  SpinButton* number_ = nullptr;
};

void TemplateDialog::run(const ScriptTemplate& offered, Gtk::Widget& opener) {
  auto* dialog = new TemplateDialog(offered);
  if (auto* window = dynamic_cast<Gtk::Window*>(opener.get_toplevel())) {
    dialog->set_transient_for(*window);
  }
  EditHistory::share(*dialog, opener);
  dialog->present();
}

TemplateDialog::TemplateDialog(const ScriptTemplate& offered)
    : Gtk::Dialog(_(offered.name)), offered_(offered) {
  build();
}

TemplateDialog::~TemplateDialog() = default;

void TemplateDialog::build() {
  set_border_width(margin / 2);
  auto& box = *get_vbox();
  box.set_spacing(spacing);
  auto* purpose = Gtk::manage(new Gtk::Label(_(offered_.purpose), 0, 0.5));
  purpose->set_line_wrap();
  purpose->set_width_chars(width_in_characters);
  purpose->set_max_width_chars(width_in_characters);
  box.pack_start(*purpose, Gtk::PACK_SHRINK);
  auto* form = Gtk::manage(new Form({}));
  for (std::size_t i = 0; i < offered_.questions.size(); ++i) {
    const auto& question = offered_.questions[i];
    auto* point_of = question.point_of < 0 ? nullptr : fields_[question.point_of].get();
    fields_.push_back(std::make_unique<Field>(question, point_of));
    fields_.back()->add_to(*form);
    fields_.back()->signal_changed.connect([this, i] { follow(i); });
  }
  box.pack_start(*form, Gtk::PACK_SHRINK);
  lacks_ = Gtk::manage(new Gtk::Label("", 0, 0.5));
  lacks_->set_line_wrap();
  lacks_->set_width_chars(width_in_characters);
  lacks_->set_max_width_chars(width_in_characters);
  box.pack_start(*lacks_, Gtk::PACK_SHRINK);
  add_button(Gtk::Stock::CANCEL, Gtk::RESPONSE_CANCEL);
  create_ = add_button(_("Cr_eate"), Gtk::RESPONSE_OK);
  set_default_response(Gtk::RESPONSE_OK);
  box.show_all();
  follow(fields_.size());
}

void TemplateDialog::follow(std::size_t changed) {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    const bool is_about_it = changed < fields_.size() && fields_[i]->point_of() &&
                             fields_[i]->point_of() == fields_[changed].get();
    if (is_about_it) fields_[i]->follow_point();
  }
  const auto lacks = what_lacks(offered_, answers());
  lacks_->set_text(lacks);
  create_->set_sensitive(lacks.empty());
}

ScriptTemplate::Answers TemplateDialog::answers() const {
  ScriptTemplate::Answers all;
  for (const auto& field : fields_) all.push_back(field->answer());
  return all;
}

// Also called when Escape or the window manager closes the dialog.
void TemplateDialog::on_response(int response) {
  if (std::exchange(closed_, true)) return;
  hide();
  Glib::signal_idle().connect_once([this] { delete this; });
  const auto given = answers();
  if (response != Gtk::RESPONSE_OK || !what_lacks(offered_, given).empty()) return;
  const auto made = offered_.make(given);
  signal_object_made().emit(*made.front());
}

}  // namespace zemblar

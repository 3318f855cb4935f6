#include "ui/panels/view_object_properties.h"

#include <algorithm>
#include <array>
#include <map>
#include <typeindex>

#include "core/i18n.h"
#include "core/property.h"
#include "diagram/diagram_watcher.h"
#include "diagram/view_label.h"
#include "diagram/view_signal.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

const DiagramPanelRegistration<ViewSignal, ViewSignalProperties> signal_registration;
const DiagramPanelRegistration<ViewLabel, ViewLabelProperties> label_registration;

std::map<std::type_index, DiagramPanelFactory>& factories() {
  static std::map<std::type_index, DiagramPanelFactory> all;
  return all;
}

/// A label cannot have the anchor Centre, so its rows are not numbered as Anchor is.
constexpr std::array label_anchors = {Anchor::Top,        Anchor::Bottom,     Anchor::Left,
                                      Anchor::Right,      Anchor::TopLeft,    Anchor::TopRight,
                                      Anchor::BottomLeft, Anchor::BottomRight};

}  // namespace

ViewSignalProperties::ViewSignalProperties(ViewSignal& signal, const Labels& labels)
    : Form(labels) {
  signal.reference();
  signal_ = Glib::RefPtr<ViewSignal>(&signal);
  for (int i = 0; i < anchor_count; ++i) anchor_.append(display_name(static_cast<Anchor>(i)));
  angle_.set_range(-360, 360);
  angle_.set_increments(1, 45);
  angle_.set_digits(1);
  angle_.set_numeric();
  add_row(_("_Anchor:"), anchor_);
  add_row(_("An_gle:"), angle_, _("°"));
  anchor_.set_tooltip_text(_("Which side of the picture lies at the signal’s place"));
  bind_property(signal, "anchor", anchor_, "active");
  follow();
  angle_.signal_value_changed().connect(sigc::mem_fun(*this, &ViewSignalProperties::turn));
  signal.property_angle().signal_changed().connect(
      sigc::mem_fun(*this, &ViewSignalProperties::follow));
}

void ViewSignalProperties::turn() {
  if (updating_ || shows_value(angle_, signal_->get_angle())) return;
  signal_->set_angle(angle_.get_value());
}

void ViewSignalProperties::follow() {
  const UpdateGuard scope(updating_);
  show_value(angle_, signal_->get_angle());
}

ViewLabelProperties::ViewLabelProperties(ViewLabel& label, const Labels& labels) : Form(labels) {
  label.reference();
  label_ = Glib::RefPtr<ViewLabel>(&label);
  for (const auto anchor : label_anchors) align_.append(display_name(anchor));
  add_row(_("A_lignment:"), align_);
  align_.set_tooltip_text(_("Which side of the text lies at the label’s place"));
  follow();
  align_.signal_changed().connect(sigc::mem_fun(*this, &ViewLabelProperties::choose));
  label.property_align().signal_changed().connect(
      sigc::mem_fun(*this, &ViewLabelProperties::follow));
}

void ViewLabelProperties::choose() {
  const int row = align_.get_active_row_number();
  if (updating_ || row < 0) return;
  DiagramWatcher::name_step(_("Align “%1”"));
  label_->set_align(label_anchors.at(static_cast<std::size_t>(row)));
}

void ViewLabelProperties::follow() {
  const UpdateGuard scope(updating_);
  const auto row = std::ranges::find(label_anchors, label_->get_align()) - label_anchors.begin();
  align_.set_active(static_cast<int>(row));
}

void register_diagram_panel(const std::type_info& type, DiagramPanelFactory factory) {
  factories().emplace(type, factory);
}

Gtk::Widget* make_diagram_panel(ViewObj& object, const Form::Labels& labels) {
  const auto found = factories().find(typeid(object));
  if (found == factories().end()) return nullptr;
  auto* panel = found->second(object, labels);
  panel->show_all();
  return panel;
}

}  // namespace zemblar

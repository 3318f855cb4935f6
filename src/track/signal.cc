#include "track/signal.h"

#include <yaml-cpp/yaml.h>

#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/private_form.h"
#include "core/property.h"
#include "core/yaml_io.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(document_class<Signal>("!signal", Section::points));

}  // namespace

// --- SignalState ---

SignalState::SignalState(PointBase* owner) : Glib::ObjectBase("SignalState"), PointState(owner) {
  register_properties();
}

SignalState::SignalState(PointBase* owner, const YAML::Node& node)
    : Glib::ObjectBase("SignalState"), PointState(owner, node) {
  register_properties();
  read_path(node, "image", image_);
}

void SignalState::register_properties() {
  register_property<std::string>(this, "image", &SignalState::get_image, &SignalState::set_image);
}

void SignalState::save(YAML::Emitter& out) const {
  out << YAML::BeginMap;
  save_state(out);
  write_path(out, "image", image_);
  out << YAML::EndMap;
}

void SignalState::restore(const EntryChange& change) {
  PointState::restore(change);
  if (!change.differs("image")) return;
  std::string path;
  read_path(change.entry(), "image", path);
  set_image(path);
}

void SignalState::set_image(const std::string& path) {
  if (path == image_) return;
  before_change();
  image_ = path;
  notify_property(*this, "image");
}

// --- Signal ---

Signal::Signal(Empty /*tag*/) : Glib::ObjectBase("Signal"), PointBase(_("Signal %1")) {}

Signal::Signal() : Signal(Empty{}) {
  add_state(C_("Signal", "Stop"), {{.servo = PointStateOutput::off().servo}});
  add_state(C_("Signal", "Go"), {PointStateOutput::on()});
  begin_with_first_state();
}

Signal::Signal(const YAML::Node& node) : Signal(Empty{}) {
  load_point(node);
  if (PrivateForm::is_used()) load_input(node);
}

void Signal::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("signal") << YAML::BeginMap;
  save_point(out);
  if (PrivateForm::is_used()) save_input(out);
  out << YAML::EndMap;
}

}  // namespace zemblar

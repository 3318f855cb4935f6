#include "core/document_text.h"

#include <yaml-cpp/yaml.h>

#include "core/layout.h"
#include "core/private_form.h"
#include "core/yaml_io.h"

namespace zemblar {

DocumentText::DocumentText() : out_(std::make_unique<YAML::Emitter>()) {
  *out_ << YAML::BeginMap;
  *out_ << YAML::Key << "title" << YAML::Value << Layout::get().get_name();
  *out_ << YAML::Key << "objects" << YAML::Value << YAML::BeginSeq;
}

DocumentText::~DocumentText() = default;

bool DocumentText::write_part() {
  if (!find_next()) return false;
  const PrivateForm numbers(numbers_);
  if (object_->save_part(*out_, part_)) {
    ++part_;
  } else {
    part_ = 0;
    object_ = Object::of(object_->gnode()->next);
  }
  return true;
}

bool DocumentText::find_next() {
  while (!object_ && section_ < section_count) {
    if (++section_ == section_count) {
      *out_ << YAML::EndSeq << YAML::EndMap;
      break;
    }
    object_ =
        Object::of(Layout::get().get_toplevel(static_cast<Section>(section_)).gnode()->children);
  }
  return object_ != nullptr;
}

std::size_t DocumentText::size() const {
  return out_->size();
}

std::string_view DocumentText::text() const {
  return {out_->c_str(), out_->size()};
}

std::string DocumentText::whole() {
  DocumentText document;
  while (document.write_part()) {
  }
  return std::string(document.text());
}

}  // namespace zemblar

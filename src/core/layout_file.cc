#include <glibmm/convert.h>
#include <yaml-cpp/yaml.h>

#include <fstream>
#include <optional>
#include <sstream>

#include "core/document_keeper.h"
#include "core/document_reader.h"
#include "core/global_options.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/safe_write.h"
#include "core/status.h"
#include "core/yaml_io.h"
#include "devices/hw_list.h"

namespace zemblar {
namespace {

constexpr auto header = "%YAML 1.2\n";
constexpr std::string_view extension = ".zblt";

/// A file that does not exist, cannot be read or is no file reads as an empty one.
std::string read_file(const std::string& path) {
  const auto file = Gio::File::create_for_path(path);
  if (file->query_file_type() != Gio::FILE_TYPE_REGULAR) return {};
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  return bytes.str();
}

/// Objects after `first` in the order of the file.
unsigned count_from(const Layout& layout, const Object& first) {
  bool met = false;
  unsigned count = 0;
  for (int section = 0; section < section_count; ++section) {
    for (const auto* object : layout.get_toplevel(static_cast<Section>(section))) {
      if (met) ++count;
      met = met || object == &first;
    }
  }
  return count;
}

Glib::ustring loss_message(const Layout& layout, const Object& object) {
  const auto followers = count_from(layout, object);
  const auto* format =
      followers == 0
          ? _("Saved, but a layout file cannot hold “%1”: %2 cannot be opened again. Remove it and "
              "save again.")
          : _("Saved, but a layout file cannot hold “%1”: it and the %3 objects after it are "
              "missing from %2, which cannot be opened again. Remove it and save again.");
  return Glib::ustring::compose(format, object.get_name(), layout.get_file()->get_parse_name(),
                                followers);
}

}  // namespace

std::string Layout::get_path() const {
  return file_ ? file_->get_path() : std::string();
}

// --- Saving ---

unsigned Layout::get_id(const Object* object) {
  return writing().number_of(object);
}

std::string Layout::serialize() {
  first_unsaved_ = nullptr;
  written_.clear();
  YAML::Emitter out;
  out << YAML::BeginMap;
  out << YAML::Key << "title" << YAML::Value << get_name();
  out << YAML::Key << "objects" << YAML::Value << YAML::BeginSeq;
  for (int section = 0; section < section_count; ++section) {
    for (auto* object : get_toplevel(static_cast<Section>(section))) {
      out << *object;
      if (!out.good() && !first_unsaved_) first_unsaved_ = object;
    }
  }
  out << YAML::EndSeq;
  return header + std::string(out.c_str(), out.size()) + "\n";
}

void Layout::save() {
  if (!file_) return save_as();
  clear_status();
  if (dialogs().finish_edits) dialogs().finish_edits();
  // The text is complete before the file is touched.
  const auto text = serialize();
  write_safely(file_, text);
  if (first_unsaved_) set_status(loss_message(*this, *first_unsaved_));
  if (auto* keeper = DocumentKeeper::get()) keeper->saved(!first_unsaved_);
}

void Layout::save_as() {
  if (dialogs().save_as) dialogs().save_as(*this);
}

void Layout::save_to(std::string uri, bool complete_extension) {
  if (complete_extension) {
    auto end = uri.substr(uri.size() - std::min(uri.size(), extension.size()));
    for (auto& c : end) c = g_ascii_tolower(c);
    if (end != extension) uri += extension;
  }
  file_ = Gio::File::create_for_uri(uri);
  if (auto* keeper = DocumentKeeper::get()) keeper->before_overwrite(get_path());
  save();
  GlobalOptions::get().set_layout(get_path());
}

// --- Opening ---

void Layout::open_dialog() {
  if (dialogs().open) dialogs().open(*this);
}

bool Layout::open(const std::string& path) {
  return open_bytes(path, read_file(path));
}

bool Layout::open_bytes(const std::string& path, const std::string& bytes) {
  auto* opened = new Layout;
  opened->file_ = Gio::File::create_for_path(path);
  return replace_by(
      opened, [&] { opened->load(bytes); }, Glib::filename_display_name(path));
}

bool Layout::open_copy(const std::string& text, bool in_private_form, const Glib::ustring& name) {
  auto* opened = new Layout;
  opened->file_ = get().file_;
  return replace_by(
      opened, [&] { opened->load_copy(text, in_private_form); }, name);
}

bool Layout::replace_by(Layout* opened, const std::function<void()>& load,
                        const Glib::ustring& name) {
  clear_status();
  auto* previous = &get();
  auto* keeper = DocumentKeeper::get();
  if (keeper) keeper->before_drop();
  std::optional<Glib::ustring> problem;
  try {
    get(opened);
    load();
  } catch (const std::exception& error) {
    problem = error.what();
  } catch (const Glib::Error& error) {
    problem = error.what();
  }
  if (problem) {
    get(previous);
    opened->signal_resolve_.clear();
    opened->signal_post_resolve_.clear();
    opened->destroy();
    set_status(Glib::ustring::compose(_("Couldn't open %1: %2"), name, *problem));
    return false;
  }
  previous->destroy();
  HWList::get().refresh();
  signal_replaced().emit();
  if (keeper) keeper->begun();
  return true;
}

// The numbers belong to the new layout, which is the current one for as long as this takes.
void Layout::load_copy(const std::string& text, bool in_private_form) {
  ObjectNumbers numbers;
  std::optional<PrivateForm> form;
  if (in_private_form) form.emplace(numbers);
  load(text);
}

void Layout::load(const std::string& bytes) {
  new_document(false);
  read_.clear();
  const bool found = read_document(
      bytes, {[this](const YAML::Node& title) { read_title(title); }, Object::create});
  if (!found) throw std::runtime_error("Empty File");
  const bool consistent = resolve();
  read_.clear();
  if (!consistent) throw std::runtime_error("Post Resolve Failure");
}

bool Layout::resolve() {
  signal_resolve_.emit();
  signal_resolve_.clear();
  const bool consistent = signal_post_resolve_.emit();
  signal_post_resolve_.clear();
  return consistent;
}

void Layout::read_title(const YAML::Node& node) {
  Glib::ustring title;
  node >> title;
  set_name(title);
}

void Layout::register_id(Object* object, const YAML::Node& node) {
  unsigned id = 0;
  node >> id;
  if (!reading().give(object, id)) {
    throw YAML::RepresentationException(node.Mark(), "Duplicate Object IDs found");
  }
}

}  // namespace zemblar

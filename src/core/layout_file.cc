#include <glibmm/convert.h>
#include <yaml-cpp/yaml.h>

#include <optional>
#include <stdexcept>

#include "core/complete_file.h"
#include "core/document_keeper.h"
#include "core/document_reader.h"
#include "core/file_bytes.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/status.h"
#include "core/yaml_io.h"

namespace zemblar {
std::string Layout::get_path() const {
  return file_ ? file_->get_path() : std::string();
}

// --- Opening ---

void Layout::open_dialog() {
  if (dialogs().open) dialogs().open(*this);
}

bool Layout::open(const std::string& path) {
  // A path that does not exist, cannot be read or is no regular file counts as an empty file.
  const auto file = read_regular_file(path, largest_layout + 1);
  const auto bytes = file ? file->bytes : std::string();
  const auto digest = digest_of(bytes);
  auto* keeper = DocumentKeeper::get();
  const bool is_whole = open_bytes(path, bytes);
  if (!is_whole && !open_complete(path, digest)) {
    if (keeper) keeper->could_not_open(path);
    return false;
  }
  get().known_digest_ = digest;
  if (!is_whole) get().known_complete_ = CompleteFile(path).digest();
  if (is_whole && keeper) keeper->opened_whole(path);
  return true;
}

// Called when opening the file itself has failed; the status line says why.
bool Layout::open_complete(const std::string& path, const std::string& digest) {
  CompleteFile complete(path);
  if (!complete.read()) {
    if (complete.exists()) {
      set_status(with_sentence(
          get_status(), Glib::ustring::compose(_("%1 cannot be read either."),
                                               Glib::filename_display_name(complete.path()))));
    }
    return false;
  }
  if (!complete.belongs_to(digest)) return false;
  auto* opened = new Layout;
  opened->file_ = Gio::File::create_for_path(path);
  const auto name = Glib::filename_display_basename(complete.path());
  const auto load = [&] { opened->load_copy(complete.text(), true); };
  if (!replace_by(opened, load, name)) return false;
  const auto warnings = get_status();  // from reading the complete file
  const auto message =
      Glib::ustring::compose(_("Opened %1, which has the whole layout, in the place of %2."), name,
                             Glib::filename_display_basename(path));
  set_status(warnings.empty() ? message : message + " " + warnings);
  return true;
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
  opened->known_digest_ = get().known_digest_;
  opened->known_complete_ = get().known_complete_;
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
    opened->drop_references();
    opened->destroy();
    set_status(Glib::ustring::compose(_("Couldn't open %1: %2"), name, *problem));
    return false;
  }
  previous->destroy();
  signal_replaced().emit();
  if (keeper) keeper->document_begun();
  return true;
}

// PrivateForm sets its numbers on the current layout, which is the new one here.
void Layout::load_copy(const std::string& text, bool in_private_form) {
  ObjectNumbers numbers;
  std::optional<PrivateForm> form;
  if (in_private_form) form.emplace(numbers);
  load(text);
}

void Layout::load(const std::string& bytes) {
  if (bytes.size() > largest_layout) throw std::runtime_error(_("It is larger than any layout."));
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

void Layout::drop_references() {
  signal_resolve_.clear();
  signal_post_resolve_.clear();
}

void Layout::read_title(const YAML::Node& node) {
  Glib::ustring title;
  node >> title;
  set_name(title);
}

void Layout::register_id(Object* object, const YAML::Node& node) {
  unsigned id = 0;
  node >> id;
  if (!reading().assign(object, id)) {
    throw YAML::RepresentationException(node.Mark(), "Duplicate Object IDs found");
  }
}

}  // namespace zemblar

#pragma once

#include <giomm/file.h>
#include <sigc++/signal.h>

#include <array>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <utility>

#include "core/object.h"
#include "core/object_numbers.h"
#include "core/toplevel.h"
#include "runtime/timer.h"

namespace YAML {
class Node;
}

namespace zemblar {

class AllLoks;
class DefaultDevice;
class LayoutDevices;
class MemberSet;
class ScriptOverlay;

/// The document: the root of the object tree, which opens and saves layout files.
///
/// There is always one current layout, `Layout::get()`. Opening a file builds a second one, makes
/// it current and then ends the first; a failure on the way leaves the first in place, untouched.
/// New empties the current one in place, so that the toplevels change but not the Layout.
///
/// A file is the line "%YAML 1.2", a block mapping with the keys `title` and `objects`, and a
/// newline. References are numbers. Each save assigns them anew, from 0 in the order in which
/// objects are first written or referred to. They may point forward, so they are resolved when
/// everything has been read. Loading blocks the main loop and never suspends a fiber.
///
/// The file format cannot hold an ECoS or a locomotive group: the emitter refuses the tag, the file
/// ends there, and cannot be opened. So Save also writes the whole document to a `CompleteFile`
/// beside it, and says so in the status line. Open reads that when opening the file itself has
/// failed.
///
/// When another program has changed the file since it was opened, Save keeps a copy of that version
/// before it replaces the file.
///
/// `save` throws Gio::Error when the bytes cannot be written; the text of the error says where the
/// old bytes are.
class Layout : public Object {
 public:
  Layout();
  ~Layout() override;

  /// The current layout; made on first use. With an argument, that layout becomes current.
  static Layout& get(Layout* replace = nullptr);
  /// True if there is a current layout.
  static bool exists();

  /// Empties the document: six toplevels and, if `with_view`, one view and no file.
  void new_document(bool with_view);
  /// Replaces the current layout by what the file holds. On a failure the status line says why,
  /// everything stays as it was, and the result is false. The remembered path is not touched.
  static bool open(const std::string& path);
  /// The same with the bytes of that file, already read.
  static bool open_bytes(const std::string& path, const std::string& bytes);
  /// The same with a backup text of a document. The file of the document does not change. `name` is
  /// what the message of a failure calls the text.
  static bool open_copy(const std::string& text, bool in_private_form, const Glib::ustring& name);
  /// `open` after a file chooser; a success is remembered for the next start.
  void open_dialog();
  /// Writes to the document's file, or calls `save_as` when there is none. Unlike Object::save,
  /// this writes the whole file.
  void save();
  /// `save` after a file chooser.
  void save_as();
  /// Makes `uri` the document's file, saves, and remembers it for the next start. With
  /// `complete_extension`, appends ".zblt" to a name that does not end in it, in upper or lower
  /// case.
  void save_to(std::string uri, bool complete_extension);
  /// The bytes that `save` would write now. Assigns the numbers of references anew.
  [[nodiscard]] std::string serialize();

  [[nodiscard]] unsigned get_id(const Object* object);
  /// A number that no object has or will get, for a place in a file that needs a number without an
  /// object.
  [[nodiscard]] unsigned unused_id() { return writing().spare(); }
  /// Records the number of an object that is being read. Throws YAML::InvalidScalar for anything
  /// but an unsigned decimal number, and YAML::RepresentationException for a number that another
  /// object has.
  void register_id(Object* object, const YAML::Node& node);
  /// The object that has this number in the file being read, or null.
  [[nodiscard]] Object* find_id(unsigned id) const { return reading().find(id); }
  /// Uses these numbers for reading and writing instead of the layout's own; null goes back to
  /// those. Returns the previous argument, or null.
  ObjectNumbers* use_numbers(ObjectNumbers* numbers) { return std::exchange(numbers_, numbers); }
  /// Resolves the references of the entries that have just been read: emits `signal_resolve`, then
  /// `signal_post_resolve`. False if a slot of the second one has failed.
  bool resolve();
  /// Forgets the references of entries that could not be read.
  void drop_references();

  [[nodiscard]] const Glib::RefPtr<Gio::File>& get_file() const { return file_; }
  /// The file's path; empty when there is no file.
  [[nodiscard]] std::string get_path() const;
  /// True if the document was read from its layout file, false if from the complete file beside it.
  [[nodiscard]] bool is_whole_file() const { return file_ && known_complete_.empty(); }

  [[nodiscard]] DefaultDevice& get_default_device() const;
  [[nodiscard]] MemberSet& get_all_blocks() const { return *all_blocks_; }
  [[nodiscard]] MemberSet& get_all_points() const { return *all_points_; }
  [[nodiscard]] AllLoks& get_all_loks() const { return *all_loks_; }
  [[nodiscard]] Toplevel& get_toplevel(Section section) const;
  /// False before the layout has its document, and while that ends.
  [[nodiscard]] bool has_toplevel(Section section) const {
    return toplevels_[static_cast<std::size_t>(section)] != nullptr;
  }
  [[nodiscard]] Toplevel& get_views() const { return get_toplevel(Section::views); }
  [[nodiscard]] Toplevel& get_loks() const { return get_toplevel(Section::locomotives); }
  [[nodiscard]] Toplevel& get_points() const { return get_toplevel(Section::points); }
  [[nodiscard]] Toplevel& get_blocks() const { return get_toplevel(Section::blocks); }
  [[nodiscard]] Toplevel& get_devices() const { return get_toplevel(Section::devices); }
  [[nodiscard]] Toplevel& get_scripts() const { return get_toplevel(Section::scripts); }

  /// Levels of temporary speeds, directions and function states, oldest first; the last one that
  /// names an object wins. Owned by the script runs that put them there.
  std::list<ScriptOverlay*> script_overlays;

  [[nodiscard]] bool get_block_control() const { return block_control_; }
  void set_block_control(bool on);
  [[nodiscard]] bool get_track_power() const;
  /// Switches every device that can switch track power. The property itself follows the devices:
  /// it is true while each of them reports power.
  void set_track_power(bool on);
  [[nodiscard]] bool get_simulating() const { return simulating_; }
  void set_simulating(bool on);
  /// True while New or Open empties this document: nothing may start work on it.
  [[nodiscard]] bool is_emptying() const { return emptying_; }

  [[nodiscard]] bool get_deletable() const override { return false; }

  sigc::signal<void, Object*>& signal_object_added() { return signal_object_added_; }
  sigc::signal<void, Object*>& signal_object_removed() { return signal_object_removed_; }
  sigc::signal<void, Object*>& signal_object_renamed() { return signal_object_renamed_; }
  /// The object has a new parent or a new place among its siblings.
  sigc::signal<void, Object*>& signal_object_moved() { return signal_object_moved_; }
  /// Emitted every 500 ms, to update what blinks or shows an age.
  sigc::signal<void>& signal_pulse() { return signal_pulse_; }

  /// All slots run; the result is whether all of them returned true.
  struct AllTrue {
    using result_type = bool;
    template <typename Iterator>
    bool operator()(Iterator first, Iterator last) const {
      bool all = true;
      for (; first != last; ++first) {
        const bool one = *first;
        all = all && one;
      }
      return all;
    }
  };
  using LoadSignal = sigc::signal<bool>::accumulated<AllTrue>;
  /// First pass after reading: pointers are looked up. The result is ignored.
  LoadSignal& signal_resolve() { return signal_resolve_; }
  /// Second pass: work that needs other objects. A slot that returns false makes the whole load
  /// fail.
  LoadSignal& signal_post_resolve() { return signal_post_resolve_; }

  /// A successful Open has replaced the current layout; the former one is gone.
  static sigc::signal<void>& signal_replaced();
  /// New has emptied the current layout.
  static sigc::signal<void>& signal_emptied();

  /// Functions of the user interface: the file choosers (without them the two dialogs do nothing),
  /// and `finish_edits`, which applies text that is still being typed before the document is saved.
  struct Dialogs {
    std::function<void()> finish_edits;
    std::function<void(Layout&)> open;
    std::function<void(Layout&)> save_as;
  };
  static Dialogs& dialogs();

 protected:
  void on_deleting() override;
  void on_child_removing(Object* child) override;

 private:
  static bool open_complete(const std::string& path, const std::string& digest);
  [[nodiscard]] bool keep_foreign(const std::string& former);
  void write_files(const std::string& text, const std::string& former);
  void report_save(bool was_changed, const Glib::ustring& lasting_trouble);
  void uncover_trouble(const Glib::ustring& message);
  static bool replace_by(Layout* opened, const std::function<void()>& load,
                         const Glib::ustring& name);
  void load(const std::string& bytes);
  void load_copy(const std::string& text, bool in_private_form);
  void read_title(const YAML::Node& node);
  ObjectNumbers& writing() { return numbers_ ? *numbers_ : written_; }
  ObjectNumbers& reading() { return numbers_ ? *numbers_ : read_; }
  [[nodiscard]] const ObjectNumbers& reading() const { return numbers_ ? *numbers_ : read_; }

  // Declared first: the constructors of the members below connect to these signals.
  sigc::signal<void, Object*> signal_object_added_;
  sigc::signal<void, Object*> signal_object_removed_;
  sigc::signal<void, Object*> signal_object_renamed_;
  sigc::signal<void, Object*> signal_object_moved_;
  sigc::signal<void> signal_pulse_;
  LoadSignal signal_resolve_;
  LoadSignal signal_post_resolve_;

  bool block_control_ = true;
  bool simulating_ = false;
  bool emptying_ = false;
  Timeout pulse_;
  ObjectNumbers written_;
  ObjectNumbers read_;
  ObjectNumbers* numbers_ = nullptr;  // used instead of both if not null
  Glib::RefPtr<Gio::File> file_;
  std::string known_digest_;               // of the file when last opened or written
  std::string known_complete_;             // of the complete file's text, likewise
  Timeout trouble_returns_;                // shows the trouble in the status line again
  const Object* first_unsaved_ = nullptr;  // the first object that the last text could not hold
  std::unique_ptr<LayoutDevices> layout_devices_;
  MemberSet* all_blocks_;  // these three are owned, but not in the tree
  MemberSet* all_points_;
  AllLoks* all_loks_;
  std::array<Toplevel*, section_count> toplevels_{};
};

}  // namespace zemblar

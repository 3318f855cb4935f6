#pragma once

#include <glibmm/ustring.h>
#include <sigc++/signal.h>
#include <sigc++/trackable.h>

#include <functional>
#include <vector>

namespace Gtk {
class HBox;
class Menu;
}  // namespace Gtk
namespace YAML {
class Emitter;
class Node;
}  // namespace YAML

namespace zemblar {

class Object;
struct ScriptChoice;

/// What a number argument may be.
struct SpinRange {
  double min = 0;
  double max = 0;
  double value = 0;
  double step = 0;
  unsigned digits = 0;
};

/// One line of a script: a condition or a command, shown as a sentence with arguments.
///
/// Arguments count from 1, as the `%1`, `%2`, ... of the sentence do. Owned by its script. A text
/// holds names of objects as they are now; see Layout::signal_object_renamed.
///
/// The base asserts for what a kind of line does not have.
class ScriptLine : public sigc::trackable {
 public:
  /// How an argument is edited.
  enum class ArgType : int { plain = 0, text = 1, number = 2, custom = 3, menu = 5 };

  ScriptLine() = default;
  virtual ~ScriptLine() = default;
  ScriptLine(const ScriptLine&) = delete;
  ScriptLine& operator=(const ScriptLine&) = delete;

  /// Writes the arguments, as elements of the sequence that the line is in a layout file.
  virtual void save(YAML::Emitter& out) const;
  /// The sentence.
  [[nodiscard]] virtual Glib::ustring get_format() const = 0;
  [[nodiscard]] virtual Glib::ustring get_arg_text(unsigned arg) const;
  [[nodiscard]] virtual ArgType get_arg_type(unsigned arg) const;
  /// Whether a person may change the argument.
  [[nodiscard]] virtual bool is_arg_editable(unsigned arg) const;
  virtual void get_spin_range(unsigned arg, SpinRange& range) const;
  /// The kind of ScriptVariable that a name stands for.
  [[nodiscard]] virtual int get_variable_type(unsigned arg) const;
  virtual void set_spin_value(unsigned arg, double value);
  /// A new menu with what the argument may be; owned by the caller. Null without an interface.
  [[nodiscard]] virtual Gtk::Menu* get_menu(unsigned arg);
  /// Builds an editor in the box. The result belongs to `finish_editor`, which is called once.
  [[nodiscard]] virtual void* create_editor(unsigned arg, Gtk::HBox& box);
  /// Takes over what was edited, unless `cancelled`, and frees the state.
  virtual void finish_editor(unsigned arg, bool cancelled, void* state);
  virtual void set_text(unsigned arg, const Glib::ustring& text);

  /// What `get_menu` shows. To choose does nothing once the line, or the object, has ended.
  [[nodiscard]] virtual std::vector<ScriptChoice> choices(unsigned arg);

  /// An argument has another value, or is to be drawn otherwise.
  sigc::signal<void, unsigned>& signal_line_changed() { return signal_line_changed_; }
  /// What a layout file would hold of this line is about to change.
  sigc::signal<void>& signal_changing() { return signal_changing_; }

 protected:
  /// A choice that calls `choose` while the line, and `object` if there is one, live.
  [[nodiscard]] ScriptChoice choice(const Glib::ustring& text, const std::function<void()>& choose,
                                    Object* object = nullptr);

 private:
  sigc::signal<void, unsigned> signal_line_changed_;
  sigc::signal<void> signal_changing_;
};

}  // namespace zemblar

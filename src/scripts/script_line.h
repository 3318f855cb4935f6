#pragma once

#include <glibmm/ustring.h>
#include <sigc++/signal.h>
#include <sigc++/trackable.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <vector>

#include "scripts/script_ui.h"

namespace YAML {
class Emitter;
class Node;
}  // namespace YAML

namespace zemblar {

class BlockSubject;
class Object;
class PointBase;
class PointState;
class PointSubject;

/// The range and the present value of a number argument.
struct SpinRange {
  double min = 0;
  double max = 0;
  double value = 0;
  double step = 0;
  unsigned digits = 0;
};

/// One line of a script: a condition or a command, shown as a sentence with arguments.
///
/// Arguments count from 1, as `%1`, `%2`, ... in the sentence do. The script owns its lines. Texts
/// contain the present names of objects; see Layout::signal_object_renamed.
///
/// A kind of line describes its arguments by `arguments`; the functions with the number of an
/// argument look there. They assert when the line does not have the argument, or not of that type.
class ScriptLine : public sigc::trackable {
 public:
  /// How an argument is edited.
  enum class ArgType : int { plain = 0, text = 1, number = 2, custom = 3, menu = 5 };

  ScriptLine() = default;
  virtual ~ScriptLine() = default;
  ScriptLine(const ScriptLine&) = delete;
  ScriptLine& operator=(const ScriptLine&) = delete;

  /// Writes the arguments as elements of the sequence that represents the line in a layout file.
  virtual void save(YAML::Emitter& out) const;
  /// True if the line is switched off: the script does as if it were not there.
  [[nodiscard]] bool is_off() const { return off_; }
  /// The sentence, with `%1`, `%2`, ... for the arguments.
  [[nodiscard]] virtual Glib::ustring get_format() const = 0;
  [[nodiscard]] virtual Glib::ustring get_arg_text(unsigned arg) const;
  [[nodiscard]] virtual ArgType get_arg_type(unsigned arg) const;
  /// True if the user may change the argument.
  [[nodiscard]] virtual bool is_arg_editable(unsigned arg) const;
  virtual void get_spin_range(unsigned arg, SpinRange& range) const;
  /// The kind of ScriptVariable that the name in this argument has.
  [[nodiscard]] virtual int get_variable_type(unsigned arg) const;
  virtual void set_spin_value(unsigned arg, double value);
  /// A new menu of the argument's choices, owned by the caller. Null without a user interface.
  [[nodiscard]] virtual Gtk::Menu* get_menu(unsigned arg);
  /// Builds an editor in the box and returns its state, for `finish_editor`; null without a user
  /// interface.
  [[nodiscard]] virtual std::unique_ptr<ArgumentEditor> create_editor(unsigned arg, Gtk::HBox& box);
  /// Applies the edited value, unless `cancelled`.
  virtual void finish_editor(unsigned arg, bool cancelled, std::unique_ptr<ArgumentEditor> state);
  virtual void set_text(unsigned arg, const Glib::ustring& text);

  /// The entries of `get_menu`. `choose` does nothing once the line or the chosen object has ended.
  [[nodiscard]] virtual std::vector<ScriptChoice> choices(unsigned arg);

  /// An argument has another value or another look.
  sigc::signal<void, unsigned>& signal_line_changed() { return signal_line_changed_; }
  /// The line's entry in a layout file is about to change.
  sigc::signal<void>& signal_changing() { return signal_changing_; }

 protected:
  /// What an argument shows and how it is edited. Each type needs its own functions.
  struct Argument {
    ArgType type = ArgType::plain;
    std::function<Glib::ustring()> text;
    std::function<std::vector<ScriptChoice>()> choices{};                        // menu
    std::function<SpinRange()> range{};                                          // number
    std::function<void(double)> set_number{};                                    // number
    int variable_type = 0;                                                       // text
    std::function<void(const Glib::ustring&)> set_text{};                        // text
    std::function<std::unique_ptr<ArgumentEditor>(Gtk::HBox&)> create_editor{};  // custom
    std::function<void(const ArgumentEditor&)> take_over{};                      // custom
  };

  /// In the order of their numbers. The functions in it are called while the line exists.
  [[nodiscard]] virtual std::vector<Argument> arguments() { return {}; }

  /// Gives a field another value, and announces that: the argument with this number shows it.
  template <typename T>
  void change(unsigned arg, T& field, const T& value) {
    if (value == field) return;
    signal_changing().emit();
    field = value;
    signal_line_changed().emit(arg);
  }
  /// The argument with this number: a menu of values for a field.
  template <typename T>
  [[nodiscard]] Argument one_of(unsigned arg, T& field, std::initializer_list<T> values,
                                Glib::ustring (*text)(T)) {
    return {.type = ArgType::menu,
            .text = [&field, text] { return text(field); },
            .choices =
                [this, arg, &field, all = std::vector<T>(values), text] {
                  std::vector<ScriptChoice> choices;
                  for (const T value : all) {
                    choices.push_back(choice(
                        text(value), [this, arg, &field, value] { change(arg, field, value); }));
                  }
                  return choices;
                }};
  }
  /// Announces the first two arguments, while the line exists.
  void announce_first_two();
  /// The first two arguments: a point or signal, and one of its states.
  [[nodiscard]] std::vector<Argument> point_arguments(
      const PointSubject& subject, const std::function<void(PointBase*)>& choose_point,
      const std::function<void(PointState*)>& choose_state);
  /// The argument with this number: "This Block", or a block.
  [[nodiscard]] Argument block_argument(unsigned arg, BlockSubject& subject);
  /// The argument with this number: a speed.
  [[nodiscard]] Argument speed_argument(unsigned arg, SpeedArg& speed);

  /// A choice that calls `choose` while the line exists, and `object` if there is one.
  [[nodiscard]] ScriptChoice choice(const Glib::ustring& text, const std::function<void()>& choose,
                                    Object* object = nullptr);

 private:
  friend class Script;

  [[nodiscard]] Argument argument(unsigned arg) const;

  bool off_ = false;
  sigc::signal<void, unsigned> signal_line_changed_;
  sigc::signal<void> signal_changing_;
};

}  // namespace zemblar

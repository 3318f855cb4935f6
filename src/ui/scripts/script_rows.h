#pragma once

#include <gtkmm/treestore.h>

#include <functional>

#include "runtime/scoped_connection.h"
#include "scripts/script.h"  // complete type, so that its pointer is an object property
#include "ui/scripts/script_row.h"

namespace zemblar {

class Object;

/// The rows of the script editor, kept equal to the script: its conditions, the entry that adds
/// one, its commands, the entry that adds one.
///
/// Call `clear` before the script ends.
class ScriptRows : public sigc::trackable {
 public:
  struct Columns : Gtk::TreeModelColumnRecord {
    Columns();
    Gtk::TreeModelColumn<ScriptRowType> type;
    Gtk::TreeModelColumn<Script*> script;
    Gtk::TreeModelColumn<ScriptLine*> line;
    Gtk::TreeModelColumn<unsigned> refresh;
    Gtk::TreeModelColumn<Glib::ustring> text;  ///< the sentence for screen readers
  };
  static const Columns& columns();

  explicit ScriptRows(Script& script);

  void clear();

  [[nodiscard]] const Glib::RefPtr<Gtk::TreeStore>& store() const { return store_; }
  [[nodiscard]] static ScriptRow at(const Gtk::TreeRow& row);
  /// The row of a line; invalid for a line of another script.
  [[nodiscard]] Gtk::TreeIter find(const ScriptLine& line) const;

  /// The row of a line is about to be removed, after which the line ends.
  sigc::signal<void, ScriptLine*>& signal_removing() { return signal_removing_; }
  /// A row has changed its look.
  sigc::signal<void>& signal_refreshed() { return signal_refreshed_; }

 private:
  void connect();
  void insert(ScriptRowType type, ScriptLine* line, unsigned position);
  void insert_line(ScriptLine& line, unsigned position);
  void remove(unsigned position);
  void move(unsigned from, unsigned to);
  [[nodiscard]] unsigned command_row(unsigned index) const;
  void refresh_line(ScriptLine* line);
  void refresh_changed();
  void refresh_soon();
  static void refresh(const Gtk::TreeRow& row);
  [[nodiscard]] static Glib::ustring text_of(const Gtk::TreeRow& row);

  Script* script_;  // null after `clear`
  Glib::RefPtr<Gtk::TreeStore> store_;
  sigc::signal<void, ScriptLine*> signal_removing_;
  sigc::signal<void> signal_refreshed_;
  std::vector<ScopedConnection> connections_;
  ScopedConnection refresh_;
};

}  // namespace zemblar

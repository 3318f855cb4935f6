#pragma once

#include <gtkmm/treestore.h>

#include <functional>

#include "runtime/scoped_connection.h"
#include "scripts/script.h"  // whole: its pointer is to be an object to the toolkit
#include "ui/scripts/script_row.h"

namespace zemblar {

class Object;

/// The rows of a script's editor, kept in step with the script: its conditions, the entry that adds
/// one, its commands, the entry that adds one.
///
/// `clear` lets go of the script, which must happen before that ends.
class ScriptRows : public sigc::trackable {
 public:
  struct Columns : Gtk::TreeModelColumnRecord {
    Columns();
    Gtk::TreeModelColumn<ScriptRowType> type;
    Gtk::TreeModelColumn<Script*> script;
    Gtk::TreeModelColumn<ScriptLine*> line;
    Gtk::TreeModelColumn<unsigned> refresh;
    Gtk::TreeModelColumn<Glib::ustring> text;  ///< the sentence, as it is read out
  };
  static const Columns& columns();

  explicit ScriptRows(Script& script);

  void clear();

  [[nodiscard]] const Glib::RefPtr<Gtk::TreeStore>& store() const { return store_; }
  [[nodiscard]] static ScriptRow at(const Gtk::TreeRow& row);
  /// Invalid for a line of another script.
  [[nodiscard]] Gtk::TreeIter find(const ScriptLine& line) const;

  /// A line is about to lose its row, and then to end.
  sigc::signal<void, ScriptLine*>& signal_removing() { return signal_removing_; }
  /// Something is to be drawn otherwise.
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

  Script* script_;  // null once it is let go
  Glib::RefPtr<Gtk::TreeStore> store_;
  sigc::signal<void, ScriptLine*> signal_removing_;
  sigc::signal<void> signal_refreshed_;
  std::vector<ScopedConnection> connections_;
  ScopedConnection refresh_;
};

}  // namespace zemblar

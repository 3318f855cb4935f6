#pragma once

#include <glibmm/propertyproxy.h>
#include <gtkmm/table.h>

#include <deque>
#include <memory>
#include <vector>

#include "runtime/scoped_connection.h"

namespace zemblar {

class FuncButton;
class Function;
class Lok;
class Object;

/// The functions of one locomotive as a block of buttons with full rows: first a single button if
/// the count is odd, then a pair if two more remain, then rows of four. Hidden functions are left
/// out.
///
/// The buttons take no focus, so Tab stops once at the whole table. Arrow keys move a mark over the
/// buttons, and Return presses the marked button.
class FuncTable : public Gtk::Table {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  FuncTable();
  ~FuncTable() override;

  [[nodiscard]] Lok* get_lok() const { return lok_; }
  void set_lok(Lok* lok);
  Glib::PropertyProxy<Lok*> property_lok() { return {this, "lok"}; }

  /// The visible buttons, in the order of the locomotive's children.
  [[nodiscard]] std::vector<FuncButton*> buttons() const;
  /// Presses the button of a function number; false if there is none.
  bool press(unsigned number);

 protected:
  bool on_expose_event(GdkEventExpose* event) override;
  bool on_key_press_event(GdkEventKey* event) override;
  bool on_focus_in_event(GdkEventFocus* event) override;
  bool on_focus_out_event(GdkEventFocus* event) override;

 private:
  struct Entry {
    Function* function;
    std::unique_ptr<FuncButton> button;
    ScopedConnection hidden_changed;
  };
  /// The place of a button, in cells.
  struct Place {
    unsigned row;
    unsigned column;
    unsigned width;
  };

  void insert(Object* child);
  void put(Entry entry);
  void move(Object* child);
  void remove(Object* child);
  void lay_out();
  Entry make_entry(Function& function);
  [[nodiscard]] std::size_t marked() const;
  [[nodiscard]] std::size_t neighbour(guint key) const;
  void mark(std::size_t index);
  void describe_mark();

  Lok* lok_ = nullptr;
  std::deque<Entry> entries_;
  std::vector<Place> places_;         // of the visible buttons
  const Function* marked_ = nullptr;  // only compared: it may have ended
  ScopedConnection child_added_;
  ScopedConnection child_removed_;
  ScopedConnection child_moved_;
  ScopedConnection deleted_;
};

}  // namespace zemblar

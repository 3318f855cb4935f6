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

/// The functions of one locomotive as a block of buttons whose rows are always full: an odd one
/// takes a row of its own, an odd pair shares one, the others stand four to a row. Hidden functions
/// are left out.
class FuncTable : public Gtk::Table {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  FuncTable();
  ~FuncTable() override;

  [[nodiscard]] Lok* get_lok() const { return lok_; }
  void set_lok(Lok* lok);
  Glib::PropertyProxy<Lok*> property_lok() { return {this, "lok"}; }

  /// The buttons that are shown, in the order of the locomotive's children.
  [[nodiscard]] std::vector<FuncButton*> buttons() const;
  /// Presses the button of a function number; false if there is none.
  bool press(unsigned number);

 private:
  struct Entry {
    Function* function;
    std::unique_ptr<FuncButton> button;
    ScopedConnection hidden_changed;
  };

  void insert(Object* child);
  void put(Entry entry);
  void move(Object* child);
  void remove(Object* child);
  void lay_out();
  Entry make_entry(Function& function);
  [[nodiscard]] bool is_ours(const Object& child) const;

  Lok* lok_ = nullptr;
  std::deque<Entry> entries_;
  ScopedConnection child_added_;
  ScopedConnection child_removed_;
  ScopedConnection child_moved_;
  ScopedConnection deleted_;
};

}  // namespace zemblar

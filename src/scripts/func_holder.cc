#include "scripts/func_holder.h"

#include <utility>

#include "locomotives/function.h"
#include "locomotives/lok.h"

namespace zemblar {

void FuncHolder::set_lok(Lok* lok) {
  name_ = get_name();
  hold(lok, lok ? find_in(*lok) : nullptr);
}

void FuncHolder::set_function(Function* function) {
  if (function) name_ = function->get_name();
  hold(function ? function->get_lok() : lok_, function);
}

void FuncHolder::set_name(const Glib::ustring& name) {
  want(nullptr, name);
}

void FuncHolder::want(Lok* lok, const Glib::ustring& name) {
  hold(lok, nullptr);
  name_ = name;
}

Glib::ustring FuncHolder::get_name() const {
  return function_ ? function_->get_name() : name_;
}

Function* FuncHolder::find_in(const Lok& lok) const {
  return dynamic_cast<Function*>(lok.find_child(get_name()));
}

// A locomotive's functions end before it does.
void FuncHolder::hold(Lok* lok, Function* function) {
  lok_ = lok;
  function_ = function;
  lok_deleted_.disconnect();
  function_deleted_.disconnect();
  if (lok) lok_deleted_ = lok->signal_deleted().connect([this] { let_go(nullptr); });
  if (function) {
    function_deleted_ = function->signal_deleted().connect([this] { let_go(lok_); });
  }
}

void FuncHolder::let_go(Lok* lok) {
  signal_changing_.emit();
  name_ = get_name();
  hold(lok, nullptr);
  signal_changed_.emit();
}

}  // namespace zemblar

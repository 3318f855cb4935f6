#include "ui/panels/function_list.h"

#include <gtkmm/cellrenderertext.h>
#include <gtkmm/scrolledwindow.h>

#include <array>

#include "core/i18n.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "ui/toolkit/renaming.h"

namespace zemblar {
namespace {

constexpr int gap = 6;

/// The lowest function number that no function of the locomotive has yet.
unsigned free_number(const Lok& lok) {
  std::array<bool, Function::max_function + 1> taken{};
  for (const auto* child : lok) {
    const auto* function = dynamic_cast<const Function*>(child);
    if (function && function->get_function() < taken.size()) taken[function->get_function()] = true;
  }
  for (unsigned number = 0; number < taken.size(); ++number) {
    if (!taken[number]) return number;
  }
  return 0;
}

}  // namespace

FunctionList::FunctionList(Lok& lok)
    : Gtk::VBox(false, gap),
      lok_(&lok),
      new_(_("New _Function"), true),
      delete_(_("De_lete Function"), true) {
  build();
  for (auto* child : lok) insert(child);
  child_added_ = lok.signal_child_added().connect(sigc::mem_fun(*this, &FunctionList::insert));
  child_removed_ = lok.signal_child_removed().connect(sigc::mem_fun(*this, &FunctionList::remove));
  child_moved_ = lok.signal_child_moved().connect(sigc::mem_fun(*this, &FunctionList::place));
  new_.signal_clicked().connect(sigc::mem_fun(*this, &FunctionList::on_new));
  delete_.signal_clicked().connect(sigc::mem_fun(*this, &FunctionList::on_delete));
  delete_.set_sensitive(false);
  list_.get_selection()->signal_changed().connect(
      [this] { delete_.set_sensitive(chosen() != nullptr); });
}

void FunctionList::build() {
  list_.get_accessible()->set_name(_("Functions"));
  list_.append_column(_("Number"), columns_.number);
  list_.append_column(_("Function"), columns_.name);
  auto* name = dynamic_cast<Gtk::CellRendererText*>(list_.get_column_cell_renderer(1));
  name->property_editable() = true;
  name->signal_edited().connect(sigc::mem_fun(*this, &FunctionList::on_name_edited));
  list_.set_enable_search(false);  // see ObjectList

  auto* frame = Gtk::manage(new Gtk::ScrolledWindow);
  frame->set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_NEVER);
  frame->set_shadow_type(Gtk::SHADOW_IN);
  frame->add(list_);
  // The buttons are above the list, so that they do not move while the user adds several functions
  // and the list grows.
  auto* buttons = Gtk::manage(new Gtk::HBox(false, gap));
  buttons->pack_start(new_, false, false);
  buttons->pack_start(delete_, false, false);
  pack_start(*buttons, false, false);
  pack_start(*frame);
}

void FunctionList::insert(zemblar::Object* child) {
  auto* function = dynamic_cast<Function*>(child);
  if (!function) return;
  const auto row = *model_->append();
  row[columns_.function] = function;
  const auto changed = [this, function] { follow(function); };
  connections_[child] = {function->property_name().signal_changed().connect(changed),
                         function->property_function().signal_changed().connect(changed)};
  follow(function);
  place(child);
}

/// Moves the row, so that the rows are in the order of the locomotive's children.
void FunctionList::place(zemblar::Object* child) {
  const auto row = find(child);
  if (!row) return;
  auto next = zemblar::ObjectIter(*child);
  for (++next; next; ++next) {
    if (const auto behind = find(*next)) return model_->move(row, behind);
  }
  model_->move(row, model_->children().end());
}

void FunctionList::remove(zemblar::Object* child) {
  connections_.erase(child);
  if (const auto row = find(child)) model_->erase(row);
}

void FunctionList::follow(Function* function) {
  const auto row = find(function);
  if (!row) return;
  (*row)[columns_.number] = function->get_function();
  (*row)[columns_.name] = function->get_name();
}

void FunctionList::on_new() {
  if (!lok_) return;
  auto* function = new Function(lok_.get());  // `add` takes ownership
  function->set_function(free_number(*lok_));
  lok_->add(function);
  if (const auto row = find(function)) list_.get_selection()->select(row);
}

void FunctionList::on_delete() {
  auto* function = chosen();
  if (!function) return;
  if (delete_.is_focus() && model_->children().size() == 1) new_.grab_focus();
  choose_neighbour();
  function->destroy();
}

// Selects the row below the selected one, else the row above. So the delete button stays sensitive
// and keeps the focus.
void FunctionList::choose_neighbour() {
  const auto rows = model_->children();
  const auto row = list_.get_selection()->get_selected();
  auto next = std::next(row);
  if (!next && row != rows.begin()) next = std::prev(row);
  if (next) list_.set_cursor(model_->get_path(next));
}

void FunctionList::on_name_edited(const Glib::ustring& path, const Glib::ustring& text) {
  const auto row = model_->get_iter(path);
  if (!row) return;
  Function* function = (*row)[columns_.function];
  rename_by_hand(*function, text);
}

Gtk::TreeModel::iterator FunctionList::find(const zemblar::Object* function) {
  for (auto row = model_->children().begin(); row != model_->children().end(); ++row) {
    const Function* shown = (*row)[columns_.function];
    if (shown == function) return row;
  }
  return {};
}

Function* FunctionList::chosen() {
  const auto row = list_.get_selection()->get_selected();
  return row ? (*row).get_value(columns_.function) : nullptr;
}

}  // namespace zemblar

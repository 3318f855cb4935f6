#pragma once

#include <gtkmm/dialog.h>

#include <memory>
#include <vector>

#include "scripts/script_template.h"

namespace zemblar {

/// Asks for what a script template needs, and makes its scripts.
///
/// It is not modal. An object that ends meanwhile is not chosen any more.
class TemplateDialog : public Gtk::Dialog {
 public:
  /// Shows a dialog for the template, which must exist for ever, over the window of `opener`. What
  /// it makes is announced by `signal_object_made`. The dialog deletes itself.
  static void run(const ScriptTemplate& offered, Gtk::Widget& opener);

  ~TemplateDialog() override;

 protected:
  void on_response(int response) override;

 private:
  class Field;

  explicit TemplateDialog(const ScriptTemplate& offered);
  void build();
  void follow(std::size_t changed);
  [[nodiscard]] ScriptTemplate::Answers answers() const;

  const ScriptTemplate& offered_;
  std::vector<std::unique_ptr<Field>> fields_;  // in the order of the questions
  Gtk::Label* lacks_ = nullptr;                 // why nothing can be made yet
  Gtk::Button* create_ = nullptr;
  bool closed_ = false;  // it is about to be deleted
};

}  // namespace zemblar

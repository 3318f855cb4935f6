#include "ui/scripts/script_clipboard.h"

#include <gtkmm/clipboard.h>

#include <utility>

#include "scripts/script.h"
#include "scripts/script_text.h"
#include "ui/scripts/script_row.h"

namespace zemblar {

void copy_to_clipboard(Script& script, const ScriptLine* only) {
  Glib::ustring sentences;
  const auto tell = [&](ScriptLine* line) {
    if (only && line != only) return;
    const auto sentence = ScriptRow{ScriptRowType::line, &script, line}.sentence().text();
    sentences += "# " + without_control_characters(sentence) + "\n";
  };
  for (unsigned i = 0; i < script.get_num_conditions(); ++i) tell(script.get_condition(i));
  for (unsigned i = 0; i < script.get_num_commands(); ++i) tell(script.get_command(i));
  Gtk::Clipboard::get()->set_text(sentences + copy_script(script, only));
}

void ClipboardReader::ask(std::function<void(const Glib::ustring&)> take) {
  if (waiting_) return;
  take_ = std::move(take);
  waiting_ = std::make_unique<EditJournal::Hold>();
  Gtk::Clipboard::get()->request_text(sigc::mem_fun(*this, &ClipboardReader::on_text));
}

// What is made of the text may be selected, which ends the panel that has asked.
void ClipboardReader::on_text(const Glib::ustring& text) {
  const auto held = std::move(waiting_);
  const auto take = std::move(take_);
  take(text);
}

}  // namespace zemblar

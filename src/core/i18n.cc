#include "core/i18n.h"

#include <clocale>

namespace zemblar {

void set_up_language() {
  std::setlocale(LC_ALL, "");
  bindtextdomain(GETTEXT_PACKAGE, ZEMBLAR_LOCALEDIR);
  bind_textdomain_codeset(GETTEXT_PACKAGE, "UTF-8");
}

Glib::ustring readable(const std::string& bytes) {
  const Glib::ustring text(bytes);
  return text.validate() ? text : text.make_valid();
}

}  // namespace zemblar

#include "core/i18n.h"

#include <clocale>

namespace zemblar {

void set_up_language() {
  std::setlocale(LC_ALL, "");
  bindtextdomain(GETTEXT_PACKAGE, ZEMBLAR_LOCALEDIR);
  bind_textdomain_codeset(GETTEXT_PACKAGE, "UTF-8");
}

}  // namespace zemblar

#include "ui/scripts/sentence.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace zemblar {

Sentence::Sentence(const Glib::ustring& format,
                   const std::function<Glib::ustring(unsigned number)>& text_of) {
  std::string text;
  std::string_view rest = format.raw();
  while (!rest.empty()) {
    const auto percent = std::min(rest.find('%'), rest.size());
    text += rest.substr(0, percent);
    rest.remove_prefix(percent);
    if (rest.empty()) break;
    rest.remove_prefix(1);
    unsigned number = 0;
    const auto [behind, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (error != std::errc{}) {
      text += '%';
      if (rest.starts_with('%')) rest.remove_prefix(1);
      continue;
    }
    rest.remove_prefix(static_cast<std::size_t>(behind - rest.data()));
    const auto begin = text.size();
    text += text_of(number).raw();
    arguments_.push_back({number, begin, text.size()});
  }
  text_ = text;
}

}  // namespace zemblar

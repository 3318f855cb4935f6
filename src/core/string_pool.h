#pragma once

#include <glibmm/ustring.h>
#include <sigc++/signal.h>

#include <map>
#include <string>
#include <vector>

namespace zemblar {

/// Counts how many objects use each string, so that an editor can offer the strings now in use.
///
/// A string may have second-level strings that go with it, such as the values of an attribute. Each
/// `add` needs one `remove`: one too many, or a string removed before its second level, is a
/// programming fault and fails an assertion. Strings are compared and sorted by their bytes, since
/// a collating comparison takes different strings for equal.
class StringPool {
 public:
  void add(const Glib::ustring& str);
  void remove(const Glib::ustring& str);
  void add(const Glib::ustring& str, const Glib::ustring& sub);
  void remove(const Glib::ustring& str, const Glib::ustring& sub);

  [[nodiscard]] bool contains(const Glib::ustring& str) const;
  /// Each string once, sorted.
  [[nodiscard]] std::vector<Glib::ustring> get_all() const;
  /// The second-level strings of `str`; none for an unknown one.
  [[nodiscard]] std::vector<Glib::ustring> get_all(const Glib::ustring& str) const;

  /// The set of strings has changed; not emitted when only a count changes. A slot may use the
  /// pool.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  using Counts = std::map<std::string, unsigned>;
  Counts str_list;
  std::map<std::string, Counts> sub_list;
  sigc::signal<void> signal_changed_;
};

/// The names of all locomotive functions, and the attribute names and values of all locomotives.
/// The pools outlive layouts, since two layouts exist at the same time while a file is opened.
StringPool& function_names();
StringPool& attribute_strings();

}  // namespace zemblar

#include "core/string_pool.h"

#include <cassert>

namespace zemblar {
namespace {

std::vector<Glib::ustring> keys_of(const std::map<std::string, unsigned>& counts) {
  std::vector<Glib::ustring> keys;
  keys.reserve(counts.size());
  for (const auto& [key, count] : counts) keys.emplace_back(key);
  return keys;
}

}  // namespace

void StringPool::add(const Glib::ustring& str) {
  if (++str_list[str.raw()] == 1) signal_changed_.emit();
}

void StringPool::add(const Glib::ustring& str, const Glib::ustring& sub) {
  ++sub_list[str.raw()][sub.raw()];
  add(str);
}

void StringPool::remove(const Glib::ustring& str) {
  const auto iter = str_list.find(str.raw());
  assert(iter != str_list.end());
  if (iter->second > 1) {
    --iter->second;
    return;
  }
  assert(sub_list.find(str) == sub_list.end());
  str_list.erase(iter);
  signal_changed_.emit();
}

void StringPool::remove(const Glib::ustring& str, const Glib::ustring& sub) {
  const auto iter1 = sub_list.find(str.raw());
  assert(iter1 != sub_list.end());
  const auto iter2 = iter1->second.find(sub.raw());
  assert(iter2 != iter1->second.end());
  if (--iter2->second == 0) iter1->second.erase(iter2);
  if (iter1->second.empty()) sub_list.erase(iter1);
  remove(str);
}

bool StringPool::contains(const Glib::ustring& str) const {
  return str_list.contains(str.raw());
}

std::vector<Glib::ustring> StringPool::get_all() const {
  return keys_of(str_list);
}

std::vector<Glib::ustring> StringPool::get_all(const Glib::ustring& str) const {
  const auto found = sub_list.find(str.raw());
  return found == sub_list.end() ? std::vector<Glib::ustring>() : keys_of(found->second);
}

StringPool& function_names() {
  static auto* pool = new StringPool;
  return *pool;
}

StringPool& attribute_strings() {
  static auto* pool = new StringPool;
  return *pool;
}

}  // namespace zemblar

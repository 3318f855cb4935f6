#include "ui/panels/lok_attribute_model.h"

#include "core/i18n.h"
#include "locomotives/lok.h"

namespace zemblar {

const LokAttributeModel::Columns& LokAttributeModel::columns() {
  static const Columns columns;
  return columns;
}

Glib::RefPtr<LokAttributeModel> LokAttributeModel::create(Lok& lok) {
  return Glib::RefPtr<LokAttributeModel>(new LokAttributeModel(lok));
}

LokAttributeModel::LokAttributeModel(Lok& lok) : Gtk::ListStore(columns()), lok_(&lok) {
  const auto row = *append();
  row[columns().key] = _("Add Attribute…");
  row[columns().placeholder] = true;
  row[columns().colour] = "gray50";
  for (const auto& [key, value] : lok.get_attributes()) {
    insert_row(--children().end(), key, value);
  }
  changed_ =
      lok.signal_attribute_changed().connect([this](const Glib::ustring& key) { follow(key); });
}

Gtk::TreeModel::iterator LokAttributeModel::find(const Glib::ustring& key) {
  const auto row = successor(key);
  return (*row)[columns().real] && (*row).get_value(columns().key).raw() == key.raw()
             ? row
             : Gtk::TreeModel::iterator();
}

void LokAttributeModel::follow(const Glib::ustring& key) {
  if (!lok_) return;
  const auto& attributes = lok_->get_attributes();
  const auto attribute = attributes.find(key.raw());
  const auto row = find(key);
  if (attribute == attributes.end()) {
    if (row) erase(row);
  } else if (row) {
    (*row)[columns().value] = attribute->second;
  } else {
    insert_row(successor(key), attribute->first, attribute->second);
  }
}

Gtk::TreeModel::iterator LokAttributeModel::successor(const Glib::ustring& key) {
  auto row = children().begin();
  // Compares by bytes, as the locomotive's map does.
  while ((*row)[columns().real] && (*row).get_value(columns().key).raw() < key.raw()) ++row;
  return row;
}

void LokAttributeModel::insert_row(const Gtk::TreeModel::iterator& before, const std::string& key,
                                   const std::string& value) {
  const auto row = *insert(before);
  row[columns().key] = key;
  row[columns().value] = value;
  row[columns().real] = true;
}

}  // namespace zemblar

#pragma once

#include "ui/toolkit/form.h"
#include "ui/toolkit/name_entry.h"
#include "ui/toolkit/object_button.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

class DeviceTessaraRailComReader;

/// The panel of a RailCom reader.
class DeviceTessaraRailComReaderProperties : public Form {
 public:
  DeviceTessaraRailComReaderProperties(DeviceTessaraRailComReader& reader, const Labels& labels);

 private:
  void choose();
  void follow();

  bool updating_ = false;
  ObjectRef<DeviceTessaraRailComReader> reader_;
  NameEntry name_;
  ObjectButton device_;
};

}  // namespace zemblar

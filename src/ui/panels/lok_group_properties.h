#pragma once

#include "ui/toolkit/form.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {

class LokGroup;
class LokToplevel;

/// The panel of a group of locomotives.
class LokGroupProperties : public Form {
 public:
  LokGroupProperties(LokGroup& group, const Labels& labels);

 private:
  NameEntry name_;
};

/// The panel of all locomotives.
class LokToplevelProperties : public Form {
 public:
  LokToplevelProperties(LokToplevel& toplevel, const Labels& labels);
};

}  // namespace zemblar

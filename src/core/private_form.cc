#include "core/private_form.h"

#include "core/layout.h"

namespace zemblar {

PrivateForm::PrivateForm(ObjectNumbers& numbers) : former_(Layout::get().use_numbers(&numbers)) {
  ++depth_;
}

PrivateForm::~PrivateForm() {
  --depth_;
  Layout::get().use_numbers(former_);
}

}  // namespace zemblar

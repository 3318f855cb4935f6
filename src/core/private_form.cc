#include "core/private_form.h"

#include "core/layout.h"

namespace zemblar {

PrivateForm::PrivateForm(ObjectNumbers& numbers) : numbers_(numbers) {
  ++depth_;
  Layout::get().swap_numbers(numbers_);
}

PrivateForm::~PrivateForm() {
  --depth_;
  Layout::get().swap_numbers(numbers_);
}

}  // namespace zemblar

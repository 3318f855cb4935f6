#include "core/private_form.h"

#include <utility>

#include "core/layout.h"
#include "core/named_form.h"

namespace zemblar {

PrivateForm::PrivateForm(ObjectNumbers& numbers)
    : former_(Layout::get().use_numbers(&numbers)),
      former_named_(std::exchange(NamedForm::used_, nullptr)) {
  ++depth_;
}

PrivateForm::~PrivateForm() {
  --depth_;
  NamedForm::used_ = former_named_;
  Layout::get().use_numbers(former_);
}

}  // namespace zemblar

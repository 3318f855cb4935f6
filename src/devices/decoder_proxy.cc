#include "devices/decoder_proxy.h"

#include <cassert>

#include "runtime/fiber.h"

namespace zemblar {

Glib::RefPtr<DecoderProxy> DecoderProxy::create(const DrivenDecoder* parent) {
  return Glib::RefPtr<DecoderProxy>(new DecoderProxy(parent));
}

DecoderProxy::DecoderProxy(const DrivenDecoder* parent) {
  assert(parent);
  type_ = parent->get_type();
  address_ = parent->get_address();
  state_ = parent->state();
  state_.mask = DecoderUpdate::all_bits;
}

void DecoderProxy::complete(const DecoderUpdate& delivered) {
  state_.mask = state_.agreeing(delivered) & delivered.mask;
  --pending_;
  if (pending_ == 0 && waiter_) fiber::resume(waiter_, 0);
}

void DecoderProxy::wait(int count) {
  assert(count >= 0);
  pending_ += count;
  if (pending_ > 0) {
    fiber::yield([this](fiber* f) { waiter_ = f; });
    waiter_ = nullptr;
  }
}

}  // namespace zemblar

#include "runtime/generator.h"

#include <cassert>
#include <utility>

#include "runtime/context_switch.h"

namespace zemblar {

generator* generator::create(std::function<void()> body) {
  auto* g = new generator(std::move(body));
  g->self.as_generator = g;
  if (g->self.make(run)) return g;
  delete g;
  return nullptr;
}

void generator::run() {
  generator* g = Context::current()->as_generator;
  try {
    g->body();
  } catch (...) {
    // As in a fiber, a body handles its own errors.
  }
  g->finished_ = true;
  g->value = 0;
  Context::leave_to(*g->caller);
}

std::uint32_t generator::next(generator* g, std::uint32_t value) {
  assert(g && !g->finished_);
  assert(!g->caller);
  g->value = value;
  g->caller = Context::current();
  Context::switch_to(g->self);
  g->caller = nullptr;
  return g->value;
}

std::uint32_t generator::yield(std::uint32_t value) {
  zemblar::generator* generator = Context::current()->as_generator;
  assert(generator);
  generator->value = value;
  Context::switch_to(*generator->caller);
  return generator->value;
}

bool generator::finished(const generator* g) {
  return g->finished_;
}

void generator::destroy(generator* g) {
  assert(!g || !g->caller);
  delete g;
}

}  // namespace zemblar

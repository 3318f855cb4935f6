#include "scripts/script_variable.h"

#include <cassert>

namespace zemblar {

ScriptVariable::ScriptVariable(Kind kind, Word word) : kind_(kind), words_{word, 0} {
  assert(kind == Kind::word1 || kind == Kind::word2 || kind == Kind::word4 || kind == Kind::word6);
}

ScriptVariable::Word ScriptVariable::word(Kind kind) const {
  expect(kind);
  return words_[0];
}

const ScriptVariable::Words& ScriptVariable::words() const {
  expect(Kind::speed);
  return words_;
}

std::uint8_t ScriptVariable::byte() const {
  expect(Kind::byte);
  return static_cast<std::uint8_t>(words_[0]);
}

bool ScriptVariable::operator==(const ScriptVariable& other) const {
  if (kind_ != other.kind_) return false;
  if (kind_ == Kind::speed) return words_[0] == other.words_[0] || words_[1] == other.words_[1];
  return words_ == other.words_;
}

}  // namespace zemblar

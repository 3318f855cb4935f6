#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>

namespace zemblar {

/// A tagged value for future computations in scripts. So far lines only claim names for such
/// values.
///
/// Kinds 1, 2, 4 and 6 hold one word, 3 two words, 5 one byte, 0 nothing. A speed, kind 3, is one
/// value in two units: two of them are equal when they agree in one.
class ScriptVariable {
 public:
  enum class Kind : int {
    empty = 0,
    word1 = 1,
    word2 = 2,
    speed = 3,
    word4 = 4,
    byte = 5,
    word6 = 6
  };
  using Word = std::uintptr_t;
  using Words = std::array<Word, 2>;

  struct TypeMismatch : std::runtime_error {
    TypeMismatch() : std::runtime_error("Script Variable Type Mismatch") {}
  };

  ScriptVariable() = default;
  /// Makes a value of kind 1, 2, 4 or 6; asserts that `kind` is one of these.
  ScriptVariable(Kind kind, Word word);
  explicit ScriptVariable(const Words& words) : kind_(Kind::speed), words_(words) {}
  explicit ScriptVariable(std::uint8_t byte) : kind_(Kind::byte), words_{byte, 0} {}

  [[nodiscard]] Kind kind() const { return kind_; }
  // These throw TypeMismatch for a value of another kind.
  [[nodiscard]] Word word(Kind kind) const;
  [[nodiscard]] const Words& words() const;
  [[nodiscard]] std::uint8_t byte() const;

  bool operator==(const ScriptVariable& other) const;

 private:
  void expect(Kind kind) const {
    if (kind_ != kind) throw TypeMismatch();
  }

  Kind kind_ = Kind::empty;
  Words words_{};
};

}  // namespace zemblar

#pragma once

// For scripts/mutants, which puts it into its copy of the sources.

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>

/// The mutant that the environment chooses. When it chooses the number 0, which none has, the
/// output says which mutants each test case reaches.
class Mutants {
 public:
  static Mutants& get() {
    static auto* const all = new Mutants;
    return *all;
  }

  bool is_chosen(unsigned long number) {
    if (chosen_ == 0) reach(number);
    return number == chosen_;
  }

  void begin_case() {
    const std::scoped_lock lock(mutex_);
    reached_.clear();
  }

 private:
  void reach(unsigned long number) {
    const std::scoped_lock lock(mutex_);
    if (reached_.insert(number).second) std::printf("\n[ REACHED  ] %lu\n", number);
  }

  const char* const text_ = std::getenv("ZEMBLAR_MUTANT");
  const unsigned long chosen_ = text_ ? std::strtoul(text_, nullptr, 10) : ~0ul;
  std::mutex mutex_;
  std::set<unsigned long> reached_;
};

inline bool chosen_mutant(unsigned long number) {
  return Mutants::get().is_chosen(number);
}

#ifdef WITH_CASE_LISTENER
#include <gtest/gtest.h>

class CaseListener : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo& /*test*/) override { Mutants::get().begin_case(); }
};

// Belongs to the test program, as all listeners do.
static const bool has_case_listener =
    (testing::UnitTest::GetInstance()->listeners().Append(new CaseListener), true);
#endif

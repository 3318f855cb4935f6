#include "runtime/generator.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "runtime/fiber.h"

namespace zemblar {
namespace {

struct Destroy {
  void operator()(generator* g) const { generator::destroy(g); }
};
using Handle = std::unique_ptr<generator, Destroy>;

Handle make(std::function<void()> body) {
  return Handle(generator::create(std::move(body)));
}

using Words = std::vector<std::uint32_t>;

TEST(Generator, hands_words_both_ways_until_its_body_ends) {
  Words received;
  auto g = make([&] {
    received.push_back(generator::yield(10));
    received.push_back(generator::yield(20));
  });
  EXPECT_FALSE(generator::finished(g.get()));
  EXPECT_EQ(generator::next(g.get(), 1), 10u);
  EXPECT_TRUE(received.empty()) << "the first word is seen by nobody";
  EXPECT_EQ(generator::next(g.get(), 2), 20u);
  EXPECT_FALSE(generator::finished(g.get()));
  EXPECT_EQ(generator::next(g.get(), 3), 0u);
  EXPECT_TRUE(generator::finished(g.get()));
  EXPECT_EQ(received, (Words{2, 3}));
}

TEST(Generator, ends_when_its_body_throws) {
  auto g = make([] {
    generator::yield(1);
    throw std::runtime_error("swallowed");
  });
  generator::next(g.get(), 0);
  EXPECT_EQ(generator::next(g.get(), 7), 0u);
  EXPECT_TRUE(generator::finished(g.get()));
}

TEST(Generator, returns_to_whichever_context_called_next) {
  auto inner = make([] {
    for (std::uint32_t i = 1;; ++i) generator::yield(i);
  });
  auto outer = make([&] {
    generator::yield(100 + generator::next(inner.get(), 0));
    EXPECT_EQ(fiber::current(), nullptr);
    generator::yield(100 + generator::next(inner.get(), 0));
  });
  Words words{generator::next(outer.get(), 0)};
  fiber* parked = nullptr;
  fiber::spawn([&] {
    words.push_back(generator::next(inner.get(), 0));
    fiber::yield([&](fiber* f) { parked = f; });
    words.push_back(generator::next(outer.get(), 0));
    EXPECT_NE(fiber::current(), nullptr);
  });
  words.push_back(generator::next(inner.get(), 0));
  fiber::resume(parked, 0);
  EXPECT_EQ(words, (Words{101, 2, 3, 104}));
}

TEST(Generator, does_not_unwind_an_unfinished_body) {
  struct Local {
    bool& destroyed;
    ~Local() { destroyed = true; }
  };
  bool destroyed = false;
  auto token = std::make_shared<int>();
  auto g = make([&destroyed, token] {
    Local local{destroyed};
    generator::yield(1);
  });
  generator::next(g.get(), 0);
  g.reset();
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(token.use_count(), 1) << "the body itself is freed";
  generator::destroy(nullptr);
}

TEST(GeneratorDeathTest, stops_at_misuse) {
  EXPECT_DEATH(generator::yield(1), "Assertion `generator' failed");
  auto calls_fiber = make([] { fiber::spawn([] { generator::yield(1); }); });
  EXPECT_DEATH(generator::next(calls_fiber.get(), 0), "Assertion `generator' failed");
  auto ended = make([] {});
  generator::next(ended.get(), 0);
  EXPECT_DEATH(generator::next(ended.get(), 0), "finished");
  Handle suicidal = make([&] { generator::destroy(suicidal.get()); });
  EXPECT_DEATH(generator::next(suicidal.get(), 0), "Assertion .*caller.* failed");
}

}  // namespace
}  // namespace zemblar

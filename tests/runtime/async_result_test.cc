#include "runtime/async_result.h"

#include <giomm/error.h>
#include <giomm/file.h>
#include <giomm/fileinfo.h>
#include <giomm/simpleactiongroup.h>
#include <glibmm/main.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace zemblar {
namespace {

using Result = Glib::RefPtr<Gio::AsyncResult>;

/// Runs `body` on a fiber and says how it went.
template <class Body>
std::string outcome(Body body) {
  std::string said = "waits";
  fiber::spawn([&said, body] {
    try {
      said = std::to_string(body());
    } catch (const Gio::Error& error) {
      said = std::string(error.what()) + ' ' + std::to_string(error.code());
    } catch (const std::exception& error) {
      said = error.what();
    }
  });
  return said;
}

TEST(AsyncResult, is_a_result_to_the_toolkit_too) {
  Glib::RefPtr<Glib::Object> source = Gio::SimpleActionGroup::create();
  for (const Result& result :
       {AsyncResult<bool>::create(source, true), AsyncResult<unsigned>::create(source, 3u),
        AsyncResult<std::exception_ptr>::create(source, nullptr)}) {
    ASSERT_TRUE(G_IS_ASYNC_RESULT(result->gobj()));
    GObject* seen = g_async_result_get_source_object(result->gobj());
    EXPECT_EQ(seen, source->gobj());
    g_object_unref(seen);
  }
}

TEST(Await, gives_the_value_or_the_error_of_a_completion_at_once) {
  using Slot = const Gio::SlotAsyncReady&;
  const auto yes = [](Slot done) {
    auto result = AsyncResult<unsigned>::create({}, 42u);
    done(result);
  };
  const auto closed = [](Slot done) {
    complete_with_error(done, {}, Gio::Error(Gio::Error::CLOSED, "Not Connected"));
  };
  const auto not_started = [](Slot) { throw std::runtime_error("not started"); };

  EXPECT_EQ(outcome([&] { return await<unsigned>(yes); }), "42");
  EXPECT_EQ(outcome([&] { return await<unsigned>(closed); }), "Not Connected 18");
  EXPECT_EQ(outcome([&] { return await<unsigned>(not_started); }), "not started");
  EXPECT_EQ(outcome([&] {
              await(yes, [](Result&) {});
              return 1;
            }),
            "1");
}

TEST(Await, waits_for_an_operation_of_the_toolkit) {
  std::string name;
  std::string failure;
  const auto name_of = [](const std::string& path) {
    const auto file = Gio::File::create_for_path(path);
    const auto info = await([&](const Gio::SlotAsyncReady& done) { file->query_info_async(done); },
                            [&](Result& result) { return file->query_info_finish(result); });
    return info->get_name();
  };
  fiber::spawn([&] {
    name = name_of("/");
    try {
      name_of("/no/such/file");
    } catch (const Gio::Error& error) {
      failure = error.code() == Gio::Error::NOT_FOUND ? "not found" : "another";
    }
  });
  EXPECT_EQ(name, "");
  while (failure.empty()) Glib::MainContext::get_default()->iteration(true);
  EXPECT_EQ(name, "/");
  EXPECT_EQ(failure, "not found");
}

TEST(AwaitDeathTest, stops_at_a_result_of_another_type) {
  EXPECT_DEATH(finish_result<bool>(AsyncResult<unsigned>::create({}, 1u)),
               "Assertion `result_normal \\|\\| result_error' failed");
}

}  // namespace
}  // namespace zemblar

#pragma once

#include <giomm/asyncresult.h>
#include <glibmm/object.h>

#include <cassert>
#include <exception>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "runtime/fiber.h"

namespace zemblar {

/// A completed result of one of the program's own asynchronous operations, in the shape that the
/// toolkit's operations complete with, so that a waiting fiber handles one kind of completion.
/// `T` is the value (bool, unsigned) or, for an operation that failed, std::exception_ptr.
///
/// Gio::AsyncResult has to be the first base: GLib adds interfaces to a type before the type's
/// class is initialised, and glibmm registers the bases in their order.
template <class T>
class AsyncResult : public Gio::AsyncResult, public Glib::Object {
 public:
  /// `source` is the object that started the operation; may be null.
  static Glib::RefPtr<Gio::AsyncResult> create(Glib::RefPtr<Glib::Object> source, T value) {
    return Glib::RefPtr<Gio::AsyncResult>(new AsyncResult(std::move(source), std::move(value)));
  }

  const T& value() const { return value_; }

 protected:
  AsyncResult(Glib::RefPtr<Glib::Object> source, T value)
      : Glib::ObjectBase("AsyncResult"), source_(std::move(source)), value_(std::move(value)) {}

  /// The caller owns the result, but giomm passes the pointer on without taking a reference, so one
  /// is taken here.
  Glib::RefPtr<Glib::ObjectBase> get_source_object_vfunc() override {
    if (source_) source_->reference();
    return source_;
  }

 private:
  Glib::RefPtr<Glib::Object> source_;
  T value_;
};

/// Calls `slot` at once with an error, as if the operation had been started and had failed.
template <class E>
void complete_with_error(const Gio::SlotAsyncReady& slot, Glib::RefPtr<Glib::Object> source,
                         const E& error) {
  auto result =
      AsyncResult<std::exception_ptr>::create(std::move(source), std::make_exception_ptr(error));
  slot(result);
}

/// Returns the value of a completed operation of the program's own, or throws its error.
template <class T>
T finish_result(const Glib::RefPtr<Gio::AsyncResult>& result) {
  auto result_normal = Glib::RefPtr<AsyncResult<T>>::cast_dynamic(result);
  auto result_error = Glib::RefPtr<AsyncResult<std::exception_ptr>>::cast_dynamic(result);
  assert(result_normal || result_error);
  if (result_error) std::rethrow_exception(result_error->value());
  return result_normal->value();
}

/// Suspends the running fiber for the length of an asynchronous operation.
///
///     return await([&](const Gio::SlotAsyncReady& done) { read_async(buffer, done, cancel); },
///                  [&](Glib::RefPtr<Gio::AsyncResult>& result) { return read_finish(result); });
///
/// `start` runs when the fiber is suspended and starts the operation with the given completion
/// slot, which may also be called at once; it throws only before it has passed the slot on.
/// `finish` runs in the completion. Returns what `finish` returns. An exception from either is
/// thrown here, on the fiber.
template <class Start, class Finish>
auto await(Start start, Finish finish) {
  using Result = std::invoke_result_t<Finish&, Glib::RefPtr<Gio::AsyncResult>&>;
  constexpr bool has_value = !std::is_void_v<Result>;
  std::conditional_t<has_value, std::optional<Result>, std::monostate> value;

  const auto complete = [&](fiber* f, Glib::RefPtr<Gio::AsyncResult>& result) {
    try {
      if constexpr (has_value) {
        value = finish(result);
      } else {
        finish(result);
      }
    } catch (...) {
      fiber::resume_exception(f);
      return;
    }
    fiber::resume(f, 0);
  };
  // The fiber continues when `start` has returned, even if the operation completes inside `start`.
  fiber::yield([&start, &complete](fiber* f) {
    try {
      start(Gio::SlotAsyncReady(
          [f, &complete](Glib::RefPtr<Gio::AsyncResult>& result) { complete(f, result); }));
    } catch (...) {
      fiber::resume_exception(f);
    }
  });
  if constexpr (has_value) return std::move(*value);
}

/// The same for an operation that completes with an AsyncResult<T> or its error form.
template <class T, class Start>
T await(Start start) {
  return await(std::move(start), finish_result<T>);
}

}  // namespace zemblar

#include "core/background_writer.h"

#include <glib/gstdio.h>
#include <glibmm/miscutils.h>

#include <utility>

#include "core/safe_write.h"

namespace zemblar {
namespace {

constexpr mode_t private_mode = 0600;

}  // namespace

BackgroundWriter::~BackgroundWriter() {
  {
    const std::scoped_lock lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void BackgroundWriter::write(const std::string& path, std::string bytes) {
  enqueue(path, std::move(bytes));
}

void BackgroundWriter::remove(const std::string& path) {
  enqueue(path, std::nullopt);
}

void BackgroundWriter::enqueue(const std::string& path, Bytes bytes) {
  {
    const std::scoped_lock lock(mutex_);
    waiting_.insert_or_assign(path, std::move(bytes));
    if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
  }
  changed_.notify_all();
}

void BackgroundWriter::finish() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return waiting_.empty() && !busy_; });
}

std::optional<std::string> BackgroundWriter::take_outcome() {
  const std::scoped_lock lock(mutex_);
  return std::exchange(outcome_, {});
}

void BackgroundWriter::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
    if (waiting_.empty()) return;
    const auto job = waiting_.extract(waiting_.begin());
    busy_ = true;
    lock.unlock();
    auto problem = carry_out(job.key(), job.mapped());
    lock.lock();
    busy_ = false;
    const bool failed_before = outcome_ && !outcome_->empty();
    if (job.mapped() && !failed_before) outcome_ = std::move(problem);
    changed_.notify_all();
  }
}

std::string BackgroundWriter::carry_out(const std::string& path, const Bytes& bytes) try {
  if (bytes) {
    g_mkdir_with_parents(Glib::path_get_dirname(path).c_str(), 0700);
    write_safely(Gio::File::create_for_path(path), *bytes, private_mode);
  } else {
    g_unlink(path.c_str());
  }
  return {};
} catch (const Glib::Error& error) {
  return error.what();
}

}  // namespace zemblar

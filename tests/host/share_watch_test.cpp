#include "apps/share/share_watch.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

#include "quoll/linux/gio/session_bus.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {
namespace {

std::size_t held() {
  const auto memory = mallinfo2();
  return memory.uordblks + memory.hblkhd;
}

TEST(ShareWatch, KeepsNothingOfALineWithoutAnEnd) {
  constexpr std::size_t kMuch = std::size_t{2} << 20;
  posix::Pipe pipe = posix::make_pipe();
  const ShareWatch watch(std::move(pipe.reading));
  const std::size_t before = held();
  std::atomic<bool> is_written = false;
  std::thread share([&] {
    const std::string block(std::size_t{1} << 16, 'x');
    for (std::size_t written = 0; written < kMuch; written += block.size()) {
      EXPECT_TRUE(posix::write_all(pipe.writing.get(), block));
    }
    is_written = true;
  });
  gio::run_main_context_until(std::chrono::steady_clock::now() + std::chrono::minutes(1),
                              [&] { return is_written.load(); });
  share.join();
  EXPECT_LT(held(), before + kMuch / 8);
}

TEST(ShareWatch, TheLastLineBeforeCancellingCounts) {
  for (const bool has_turn : {false, true}) {
    posix::Pipe pipe = posix::make_pipe();
    ShareWatch watch(std::move(pipe.reading));
    for (int line = 0; line < 10'000; ++line) {
      ASSERT_TRUE(posix::write_all(pipe.writing.get(), "0 201\n"));
    }
    ASSERT_TRUE(posix::write_all(pipe.writing.get(), has_turn ? "1 2\n" : "1 201\n"));
    watch.cancel();
    EXPECT_EQ(watch.is_cancelled(), !has_turn);
  }
}

}  // namespace
}  // namespace quoll::share

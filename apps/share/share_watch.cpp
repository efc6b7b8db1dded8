#include "apps/share/share_watch.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <utility>

#include "apps/share/identifier.h"
#include "apps/share/progress_pipe.h"

namespace quoll::share {

using namespace std::chrono_literals;

ShareWatch::ShareWatch(posix::UniqueFd pipe, std::function<void()> moved_on)
    : pipe_(std::move(pipe)), moved_on_(std::move(moved_on)) {
  fcntl(pipe_.get(), F_SETFL, O_NONBLOCK);
  reading_ = gio::Source::readable(pipe_.get(), [this] {
    const bool goes_on = read();
    if (!goes_on) {
      withdraw();
    }
    return goes_on;
  });
}

ShareWatch::~ShareWatch() {
  withdraw();
}

void ShareWatch::offer_cancelling(const std::function<GDBusConnection*()>& bus) {
  alarm_ = gio::Source::after(2s, [this, bus] {
    if (GDBusConnection* const connection = bus()) {
      show(connection);
    }
  });
}

void ShareWatch::show(GDBusConnection* bus) {
  buttons_ = std::make_unique<gio::NotificationButtons>(bus, 24h);
  buttons_->send(
      kIdentifier, "What you share is being prepared",
      "It takes a while; the draft opens by itself.", {{"cancel", "Cancel"}}, [] {},
      [this](const std::string& /*action*/, const gio::ActivationTokens& /*tokens*/) { cancel(); });
}

/// False when there is nothing more to know. The share has had other people's bytes in its hands:
/// what is no line is not kept.
bool ShareWatch::read() {
  constexpr std::size_t kLongestLine = 64;
  std::array<char, 4096> block{};
  const ssize_t size = ::read(pipe_.get(), block.data(), block.size());
  if (size <= 0) {
    return false;
  }
  line_.append(block.data(), static_cast<std::size_t>(size));
  if (moved_on_) {
    moved_on_();
  }
  if (has_turn(line_)) {
    has_turn_ = true;
    withdraw();
  }
  line_.erase(0, line_.rfind('\n') + 1);
  if (line_.size() > kLongestLine) {
    line_.clear();
  }
  return true;
}

void ShareWatch::withdraw() {
  alarm_ = {};
  if (buttons_) {
    buttons_->withdraw();
    buttons_.reset();
  }
}

void ShareWatch::cancel() {
  constexpr int kBlocksInAPipe = 16;
  for (int block = 0; block < kBlocksInAPipe && pipe_ && read(); ++block) {
    // The turn may have come.
  }
  if (has_turn_ || !pipe_) {
    return;
  }
  is_cancelled_ = true;
  reading_ = {};
  pipe_.reset();
}

}  // namespace quoll::share

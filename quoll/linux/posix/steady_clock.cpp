#include "quoll/linux/posix/steady_clock.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace quoll::posix {

namespace {

class SteadyClock final : public platform::Clock {
 public:
  foundation::Date now() override {
    return {
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count()};
  }

  void sleep(double seconds) override {
    constexpr double kLongest = 1e9;  // more than the counter holds is not asked for
    if (seconds > 0) {
      std::this_thread::sleep_for(std::chrono::duration_cast<std::chrono::nanoseconds>(
          std::chrono::duration<double>(std::min(seconds, kLongest))));
    }
  }
};

}  // namespace

std::shared_ptr<platform::Clock> make_clock() {
  return std::make_shared<SteadyClock>();
}

}  // namespace quoll::posix

#include "quoll/linux/posix/thread_pool.h"

#include <sys/resource.h>

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "quoll/foundation/error.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/format.h"
#include "quoll/platform/log.h"

namespace quoll::posix {

namespace {

using Block = std::function<void()>;
using platform::QueuePriority;

constexpr int kThreads = 4;
constexpr int kBackgroundNice = 10;  // beyond what the process is already

/// What the threads share; each of them keeps it alive.
class Work : public std::enable_shared_from_this<Work> {
 public:
  void add(Block block) {
    {
      const std::lock_guard lock(mutex_);
      blocks_.push_back(std::move(block));
    }
    changed_.notify_one();
  }

  /// False when the pool has not a single thread; the next call tries again.
  bool start_pool() {
    const std::lock_guard lock(starting_);
    for (int i = is_served_ ? kThreads : 0; i < kThreads; ++i) {
      is_served_ |= start([this] { serve(); });
    }
    return is_served_;
  }

  /// False when the system has no thread left.
  bool start(Block body) {
    {
      const std::lock_guard lock(mutex_);
      ++threads_;
    }
    try {
      std::thread([self = shared_from_this(), body = std::move(body)]() mutable {
        serving_ = self.get();
        body();
        body = nullptr;
        self->ended();
      }).detach();
      return true;
    } catch (const std::system_error& error) {
      platform::log_event({foundation::format("queue: no thread can be started: %@", error.what()),
                           foundation::posix_error(error.code().value())});
      ended();
      return false;
    }
  }

  void finish() {
    std::unique_lock lock(mutex_);
    finishing_ = true;
    changed_.notify_all();
    if (serving_ != this) {  // one of the threads would wait for itself
      gone_.wait(lock, [this] { return threads_ == 0; });
    }
  }

 private:
  void serve() {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [this] { return finishing_ || !blocks_.empty(); });
      if (blocks_.empty()) {
        return;
      }
      Block block = std::move(blocks_.front());
      blocks_.pop_front();
      lock.unlock();
      platform::run_block(block);
      block = nullptr;  // what it holds is let go outside the lock
      lock.lock();
    }
  }

  void ended() {
    const std::lock_guard lock(mutex_);
    --threads_;
    gone_.notify_all();
  }

  static inline thread_local const Work* serving_ = nullptr;

  std::mutex starting_;
  bool is_served_ = false;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::condition_variable gone_;
  std::deque<Block> blocks_;
  int threads_ = 0;
  bool finishing_ = false;
};

class ThreadPool final : public platform::Queue {
 public:
  ~ThreadPool() override { work_->finish(); }

  void async(QueuePriority priority, Block block) override {
    // A thread has the priority of the one that started it and cannot raise it: were the pool
    // started by the first block that a background block hands over, it would be slow for ever.
    const bool is_served = work_->start_pool();
    if (priority == QueuePriority::kDefault) {
      add_to_pool(std::move(block), is_served);
      return;
    }
    const auto body = [block] {
      constexpr id_t kThisThread = 0;
      ::setpriority(PRIO_PROCESS, kThisThread,
                    ::getpriority(PRIO_PROCESS, kThisThread) + kBackgroundNice);
      platform::run_block(block);
    };
    if (!work_->start(body)) {
      add_to_pool(std::move(block), is_served);  // late is better than never
    }
  }

 private:
  void add_to_pool(Block block, bool is_served) {
    if (!is_served) {
      throw std::runtime_error("no thread can be started");
    }
    work_->add(std::move(block));
  }

  std::shared_ptr<Work> work_ = std::make_shared<Work>();
};

}  // namespace

std::shared_ptr<platform::Queue> make_thread_pool() {
  return std::make_shared<ThreadPool>();
}

}  // namespace quoll::posix

#include "tests/support/thread_coordinator.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <list>
#include <mutex>
#include <string>

namespace quoll::test {

namespace {

using foundation::NSURL;

/// The items that somebody works on.
struct Accesses {
  std::mutex mutex;
  std::condition_variable ended;
  std::list<std::string> items;

  [[nodiscard]] bool excludes(const std::string& item) const {
    const auto is_inside = [](const std::string& inner, const std::string& outer) {
      return inner == outer || inner.starts_with(outer + "/");
    };
    return std::any_of(items.begin(), items.end(), [&](const std::string& other) {
      return is_inside(item, other) || is_inside(other, item);
    });
  }
};

class ThreadCoordinator final : public platform::NSFileCoordinator {
 public:
  explicit ThreadCoordinator(std::shared_ptr<Accesses> accesses) : accesses_(std::move(accesses)) {}

  std::optional<foundation::Error> coordinateWritingItemAtURL(
      const std::shared_ptr<NSURL>& url, platform::NSFileCoordinatorWritingOptions /*options*/,
      const std::function<void(const std::shared_ptr<NSURL>&)>& accessor) override {
    const auto path = url ? url->path() : std::nullopt;
    if (!path) {
      return foundation::file_error(ENOENT, "", true);
    }
    struct Access {
      Access(Accesses& all, const std::string& item) : all_(all) {
        std::unique_lock lock(all_.mutex);
        all_.ended.wait(lock, [&] { return !all_.excludes(item); });
        place_ = all_.items.insert(all_.items.end(), item);
      }
      Access(const Access&) = delete;
      Access& operator=(const Access&) = delete;
      ~Access() {
        const std::lock_guard lock(all_.mutex);
        all_.items.erase(place_);
        all_.ended.notify_all();
      }
      Accesses& all_;
      std::list<std::string>::iterator place_;
    };
    const Access access(*accesses_, *path);
    accessor(url);
    return std::nullopt;
  }

 private:
  std::shared_ptr<Accesses> accesses_;
};

}  // namespace

std::function<std::unique_ptr<platform::NSFileCoordinator>()> thread_coordinators() {
  return [accesses = std::make_shared<Accesses>()] {
    return std::make_unique<ThreadCoordinator>(accesses);
  };
}

}  // namespace quoll::test

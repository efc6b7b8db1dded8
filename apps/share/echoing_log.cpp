#include "apps/share/echoing_log.h"

#include <unistd.h>

#include <utility>

#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {

namespace {

class EchoingLog final : public platform::Log {
 public:
  explicit EchoingLog(std::shared_ptr<platform::Log> log) : log_(std::move(log)) {}

  void write(const platform::LogEvent& event) override {
    // One write a line, so that the lines of several threads do not mix. Who does not listen at the
    // other end has the system log.
    static_cast<void>(posix::write_all(STDERR_FILENO, foundation::printable(event.text) + "\n"));
    log_->write(event);
  }

 private:
  std::shared_ptr<platform::Log> log_;
};

}  // namespace

std::shared_ptr<platform::Log> make_echoing_log(std::shared_ptr<platform::Log> log) {
  return std::make_shared<EchoingLog>(std::move(log));
}

}  // namespace quoll::share

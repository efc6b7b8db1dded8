#include "quoll/linux/posix/system_log.h"

#include <syslog.h>

#include <string_view>
#include <utility>

#include "quoll/foundation/printable.h"

namespace quoll::posix {

namespace {

constexpr std::size_t kLongestLine = 4096;

class SystemLog final : public platform::Log {
 public:
  explicit SystemLog(std::string program) {
    // The C library keeps the pointer for as long as the process lives.
    static std::string name;
    name = std::move(program);
    ::openlog(name.c_str(), LOG_PID | LOG_NDELAY, LOG_USER);
  }

  void write(const platform::LogEvent& event) override {
    ::syslog(LOG_NOTICE, "%s", foundation::printable(event.text, kLongestLine).c_str());
  }
};

}  // namespace

std::shared_ptr<platform::Log> make_system_log(std::string program) {
  return std::make_shared<SystemLog>(std::move(program));
}

}  // namespace quoll::posix

#include <sys/resource.h>

#include <cstdint>
#include <exception>
#include <iostream>
#include <utility>

#include "apps/command_line/command_line.h"
#include "apps/share-service/service.h"

namespace {

/// Raises the limit of open files, because calls bring descriptors along, more than a program may
/// usually have open. Shares keep the limit that this program was started with.
void allow_many_descriptors(quoll::share_service::ShareBounds& bounds) {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    bounds.descriptors = std::exchange(limit.rlim_cur, limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
  }
}

}  // namespace

int main(int argc, char** argv) {
  double idle_seconds = 10;
  quoll::share_service::ShareBounds bounds;
  std::int64_t share_seconds = bounds.time.count();
  quoll::command_line::CommandLine line("quoll-share-service", QUOLL_VERSION,
                                        "Shares for other programs; the session bus starts it.",
                                        "");
  line.value("--idle", idle_seconds, "end after so many idle seconds, 86400 at most")
      .range(0, 86400, "seconds")
      .placeholder("SECONDS")
      .show_default();
  line.value("--time", share_seconds,
             "end a share without progress for so many seconds, 1 to 86400")
      .range(1, 86400, "seconds")
      .placeholder("SECONDS")
      .show_default();
  if (const auto status = line.read(argc, argv)) {
    return *status;
  }
  bounds.time = std::chrono::seconds(share_seconds);
  allow_many_descriptors(bounds);
  try {
    const auto failure = quoll::share_service::serve_shares(
        std::chrono::milliseconds(static_cast<std::int64_t>(idle_seconds * 1000)), bounds);
    if (!failure) {
      return 0;
    }
    std::cerr << "quoll-share-service: " << *failure << '\n';
  } catch (const std::exception& exception) {
    std::cerr << "quoll-share-service: " << exception.what() << '\n';
  }
  return 1;
}

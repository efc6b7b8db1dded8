#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <iostream>
#include <utility>

#include "apps/share-service/service.h"
#include "apps/share/usage_words.h"
#include "quoll/foundation/printable.h"

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
  CLI::App app("Shares for other programs; the session bus starts it.", "quoll-share-service");
  app.set_version_flag("--version", "quoll-share-service " QUOLL_VERSION);
  app.add_option("--idle", idle_seconds, "end after so many idle seconds, 86400 at most")
      ->check([](const std::string& seconds) {
        return CLI::Range(0.0, 86400.0)(seconds).empty() ? "" : "it takes 0 to 86400 seconds";
      })
      ->type_name("SECONDS")
      ->capture_default_str();
  app.add_option("--time", share_seconds,
                 "end a share that takes longer than so many seconds, 1 to 86400")
      ->check([](const std::string& seconds) {
        return CLI::Range(1, 86400)(seconds).empty() ? "" : "it takes 1 to 86400 seconds";
      })
      ->type_name("SECONDS")
      ->capture_default_str();
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked_for_help) {
    return app.exit(asked_for_help);
  } catch (const CLI::ParseError& error) {
    std::cerr << "quoll-share-service: "
              << quoll::foundation::printable(quoll::share::in_plain_words(error.what()))
              << "; see quoll-share-service --help\n";
    return 2;
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

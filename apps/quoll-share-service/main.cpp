#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <iostream>

#include "apps/quoll-share-service/service.h"

namespace {

/// Calls bring descriptors along, more at a time than a program is usually given.
void allow_many_descriptors() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
  }
}

}  // namespace

int main(int argc, char** argv) {
  double idle_seconds = 10;
  CLI::App app("Shares for other programs; the session bus starts it.", "quoll-share-service");
  app.add_option("--idle", idle_seconds, "end after so many idle seconds")
      ->check(CLI::Range(0.0, 86400.0))
      ->capture_default_str();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  allow_many_descriptors();
  try {
    const auto failure = quoll::serve_shares(
        std::chrono::milliseconds(static_cast<std::int64_t>(idle_seconds * 1000)));
    if (!failure) {
      return 0;
    }
    std::cerr << "quoll-share-service: " << *failure << '\n';
  } catch (const std::exception& exception) {
    std::cerr << "quoll-share-service: " << exception.what() << '\n';
  }
  return 1;
}

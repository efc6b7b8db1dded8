#include <csignal>
#include <exception>
#include <iostream>

#include "apps/share/exit_code.h"
#include "apps/share/notify.h"
#include "apps/share/progress_pipe.h"
#include "apps/share/report.h"
#include "apps/share/request/arguments.h"
#include "apps/share/request/descriptors.h"
#include "apps/share/share_program.h"

namespace quoll::share {

namespace {

int share(Arguments& arguments) {
  close_inherited_descriptors(arguments.request, arguments.progress);
  // Whoever follows the progress answers a caller with what is told, which is nothing when all is
  // well.
  const Tell note =
      arguments.progress >= 0 ? Tell() : [](const std::string& line) { std::cerr << line; };
  const auto share = [&](const Tell& tell, int pipe) {
    return run_share(std::move(arguments.request),
                     {.print = arguments.print,
                      .json = arguments.json,
                      .verbose = arguments.verbose,
                      .progress = pipe >= 0 ? progress_to(pipe) : nullptr,
                      .starter = pipe,
                      .note = note,
                      .tell = tell,
                      .tell_of_waiting = arguments.notify ? tell : nullptr});
  };
  return arguments.notify
             ? share_and_notify(share)
             : share([](const std::string& told) { std::cerr << told; }, arguments.progress);
}

}  // namespace

}  // namespace quoll::share

int main(int argc, char** argv) {
  quoll::share::hold_standard_descriptors();
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));  // a file that may not grow is an error
  try {
    auto arguments = quoll::share::parse(argc, argv);
    const int* const ended = std::get_if<int>(&arguments);
    return ended != nullptr ? *ended
                            : quoll::share::share(std::get<quoll::share::Arguments>(arguments));
  } catch (const std::exception& exception) {
    quoll::share::report(quoll::share::failed_share(exception.what()), std::cerr);
    return static_cast<int>(quoll::share::ExitCode::kNotOpened);
  }
}

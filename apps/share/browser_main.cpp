#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

#include "apps/share/exit_code.h"
#include "apps/share/notice.h"
#include "apps/share/notify.h"
#include "apps/share/progress_pipe.h"
#include "apps/share/report.h"
#include "apps/share/request/browser_port.h"
#include "apps/share/request/browser_request.h"
#include "apps/share/request/descriptors.h"
#include "apps/share/share_program.h"
#include "quoll/linux/posix/subprocess.h"

// The entry of browsers. A browser starts this program when our extension asks for it, with
// arguments that name the extension (Chromium: its origin; Firefox: the path of our manifest, and
// its identifier), and passes its words on over the standard streams. The arguments are the
// browser's word and no proof: whoever can start this program can say anything.

namespace {

using quoll::share::BrowserPort;
using quoll::share::BrowserRequest;
using quoll::share::ExitCode;
using quoll::share::failed_share;
using quoll::share::Notice;
using quoll::share::ShareRequest;
using quoll::share::ShareResult;

using Outcome = std::variant<ShareRequest, ShareResult>;

constexpr const char* kTryAgain = "try it once more";

/// Reads frames until the extension has said everything. A browser that goes away before wants
/// nothing any more.
Outcome read_request(BrowserPort& port) {
  BrowserRequest request;
  std::string frame;
  while (true) {
    switch (port.receive(frame)) {
      case BrowserPort::Received::kFrame:
        break;
      case BrowserPort::Received::kEnd:
        return failed_share("the browser ended before everything was there", kTryAgain);
      case BrowserPort::Received::kDamaged:
        return failed_share("the browser did not say what to share", kTryAgain);
    }
    switch (request.take(frame)) {
      case BrowserRequest::Step::kMore:
        break;
      case BrowserRequest::Step::kEnd:
        return request.request();
      case BrowserRequest::Step::kOtherVersion:
        return failed_share("the browser's extension has another version than this program",
                            "update both, and start the browser anew");
      case BrowserRequest::Step::kRefused:
        return failed_share("the browser did not say what to share", kTryAgain);
    }
  }
}

void tell_end(BrowserPort& port, const ShareResult& result) {
  std::ostringstream told;
  quoll::share::report(result, told);
  const bool is_whole = result.code() == ExitCode::kOpened;
  const Notice notice =
      is_whole ? Notice() : quoll::share::notice_of(static_cast<int>(result.code()), told.str());
  port.tell_end(result.is_opened, notice.title, notice.body);
}

int share(const quoll::share::Tell& tell, int pipe) {
  BrowserPort port(STDIN_FILENO, STDOUT_FILENO);
  const quoll::share::Progress shown = pipe >= 0 ? quoll::share::progress_to(pipe) : nullptr;
  return quoll::share::run_share(
      [&] { return read_request(port); },
      {.print = false,
       .json = false,
       .verbose = false,
       .progress =
           [&](std::size_t done, std::size_t steps) {
             port.tell_progress(static_cast<int>(99 * done / std::max<std::size_t>(steps, 1)));
             if (shown) {
               shown(done, steps);
             }
           },
       .starter = pipe,
       .note = nullptr,
       .tell = tell,
       .tell_result = [&](const ShareResult& result) { tell_end(port, result); },
       .tell_of_waiting =
           [&](const std::string& line) {
             port.tell_waiting();
             tell(line);
           }});
}

/// A browser ends what it has started when it ends itself, or when the extension is updated. The
/// share goes on: it is a process of a session of its own.
int share_apart() {
  const pid_t process = fork();
  if (process > 0) {
    const int status = quoll::posix::reap(process).value_or(0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : static_cast<int>(ExitCode::kNotOpened);
  }
  if (process == 0) {
    setsid();
  }
  return quoll::share::share_and_notify(share);
}

/// What is told has names of what is shared. A browser may keep that.
void say_nothing_to_the_browsers_log() {
  const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nothing >= 0) {
    dup2(nothing, STDERR_FILENO);
    close(nothing);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    std::cout << "quoll-share-browser " QUOLL_VERSION "\n";
    return 0;
  }
  quoll::share::hold_standard_descriptors();
  quoll::share::close_inherited_descriptors({});
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));  // a file that may not grow is an error
  const bool is_started_by_browser =
      argc > 2 || (argc == 2 && std::string_view(argv[1]).starts_with("chrome-extension://"));
  if (!is_started_by_browser) {
    std::cerr << "quoll-share-browser: browsers start this program; quoll-share is for people\n";
    return static_cast<int>(ExitCode::kUsage);
  }
  say_nothing_to_the_browsers_log();
  return share_apart();
}

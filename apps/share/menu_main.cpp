#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

#include "apps/share/exit_code.h"
#include "apps/share/notice.h"
#include "apps/share/report.h"
#include "apps/share/request/descriptors.h"
#include "apps/share/request/menu_request.h"
#include "apps/share/request/menu_socket.h"
#include "apps/share/share_program.h"

// The entry of KDE's share menu. The program whose menu it is starts this one with the socket that
// it listens on: "--server PATH", and more that does not matter here.

namespace {

using quoll::share::ExitCode;
using quoll::share::MenuSocket;

constexpr int kNotOpened = static_cast<int>(ExitCode::kNotOpened);

std::string_view value_of(std::string_view option, int argc, char** argv) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (argv[i] == option) {
      return argv[i + 1];
    }
  }
  return {};
}

/// The socket holds as much of a menu that does not read: the next share must not wait for it.
void tell(MenuSocket& socket, const std::string& told) {
  constexpr std::size_t kMost = 4096;
  socket.tell_error(quoll::share::shown_report(told, kMost).value_or("the system log tells more"));
}

int fail(MenuSocket& socket, const quoll::share::ShareResult& result) {
  std::ostringstream told;
  quoll::share::report(result, told);
  tell(socket, told.str());
  return kNotOpened;
}

int share(MenuSocket& socket) {
  const auto message = socket.receive();
  auto request = message ? quoll::share::read_menu_request(*message) : std::nullopt;
  if (!request) {
    return fail(socket, quoll::share::failed_share("the menu did not say what to share",
                                                   "choose the entry again"));
  }
  return quoll::share::run_share(
      std::move(*request),
      {.print = false,
       .json = false,
       .verbose = false,
       .progress =
           [&](std::size_t done, std::size_t steps) {
             socket.tell_progress(static_cast<int>(99 * done / std::max<std::size_t>(steps, 1)));
           },
       .starter = socket.descriptor(),
       .note = nullptr,
       .tell =
           [&](const std::string& told) {
             if (told.empty()) {
               socket.tell_end();
             } else {
               tell(socket, told);
             }
           }});
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    std::cout << "quoll-share-purpose " QUOLL_VERSION "\n";
    return 0;
  }
  quoll::share::hold_standard_descriptors();
  quoll::share::close_inherited_descriptors({});
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));  // a menu that went away is no reason to end
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));  // a file that may not grow is an error
  MenuSocket socket{std::string(value_of("--server", argc, argv))};
  if (!socket.is_connected()) {
    std::cerr
        << "quoll-share-purpose: this is the entry of a share menu; quoll-share is for people\n";
    return static_cast<int>(ExitCode::kUsage);
  }
  try {
    return share(socket);
  } catch (const std::exception& exception) {
    return fail(socket, quoll::share::failed_share(exception.what()));
  }
}

#pragma once

#include <functional>
#include <string>
#include <variant>

#include "apps/share/request/share_request.h"
#include "apps/share/result.h"
#include "apps/share/run.h"
#include "apps/share/staging_lock.h"

namespace quoll::share {

/// Answers the request of a program that confines itself before it reads what is asked for, or how
/// the share has ended already. It may name no file, because none could be opened.
using ReadRequest = std::function<std::variant<ShareRequest, ShareResult>()>;

/// How a program that shares talks to the person or the program that asked for the share.
struct ShareSettings {
  /// The command URL goes to standard output and is not opened.
  bool print = false;
  /// What came of the share goes to standard output, for a program.
  bool json = false;
  /// The steps and the log go to standard error too.
  bool verbose = false;
  /// The first half of the steps is to prepare the items, the second to stage them. Null: a person
  /// at a terminal is told.
  Progress progress;
  /// A pipe or a socket. Until it is the share's turn, whoever has the other end ends the share by
  /// closing it, as SIGTERM would. -1: nobody.
  int starter = -1;
  /// Called with a whole line that is worth knowing before the work begins; null: nobody is told.
  std::function<void(const std::string& line)> note;
  /// Called once, at the end, with the report: whole lines, empty when all went well.
  std::function<void(const std::string& told)> tell;
  /// Called before `tell`, when there is one.
  std::function<void(const ShareResult& result)> tell_result = nullptr;
  /// Called with a line when another share is not finished for long. Null: a person at a terminal
  /// is told.
  TellOfWaiting tell_of_waiting = nullptr;
};

/// Shares what was asked for as one draft and answers the exit code, also of a share that failed.
/// One line of the system log tells what came of it, and so does one at a terminal. When an item is
/// still being read at the end, it ends the program itself.
///
/// To be called once, while there is one thread: it starts the launcher, installs the desktop and
/// confines the process.
[[nodiscard]] int run_share(ShareRequest request, const ShareSettings& settings);

/// The same with a request that is read when the program is confined.
[[nodiscard]] int run_share(const ReadRequest& read, const ShareSettings& settings);

}  // namespace quoll::share

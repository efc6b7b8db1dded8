#include "apps/share/request/private_folder.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace quoll::share {

namespace {

std::string temporary_folder() {
  const char* const named = std::getenv("TMPDIR");
  return named != nullptr && named[0] == '/' ? named : "/tmp";
}

/// Makes the folder, tells its path, and removes it when the other end of the socket is closed. Who
/// removes it is there before it is: whenever the program is killed, nothing stays. Ends with the
/// `errno` value when no folder can be made.
[[noreturn]] void keep_while_open(int socket, std::string path) {
  // What is sent to the whole group of processes is meant for the program, and then this one works.
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
    static_cast<void>(std::signal(number, SIG_IGN));
  }
  // Nothing of the program is held open, least of all a pipe that somebody reads to its end.
  dup2(socket, 0);
  close_range(1, ~0U, 0);
  if (mkdtemp(path.data()) == nullptr) {
    _exit(errno);
  }
  // Who was not told the path waits for it, until this process ends.
  const int number = posix::write_all(0, path) ? 0 : errno;
  char ignored = 0;
  while (number == 0 && read(0, &ignored, 1) < 0 && errno == EINTR) {
  }
  std::error_code failure;
  std::filesystem::remove_all(path, failure);
  _exit(number);
}

/// Waits for the end of the process; answers its exit status, or -1.
int end_of(pid_t process) {
  int status = 0;
  pid_t ended = -1;
  while ((ended = waitpid(process, &status, 0)) < 0 && errno == EINTR) {
  }
  return ended == process && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

std::unique_ptr<PrivateFolder> PrivateFolder::make() {
  const std::string wanted = temporary_folder() + "/quoll-share-XXXXXX";
  std::array<int, 2> ends{-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    return nullptr;
  }
  posix::UniqueFd own(ends[0]);
  posix::UniqueFd others(ends[1]);
  const pid_t cleaner = fork();
  if (cleaner == 0) {
    keep_while_open(others.get(), wanted);
  }
  if (cleaner < 0) {
    return nullptr;
  }
  others.reset();
  std::string path;
  bool ended = false;
  if (!posix::read_until(own.get(), path, wanted.size(), ended) || path.size() != wanted.size()) {
    own.reset();
    const int number = end_of(cleaner);
    errno = number > 0 ? number : EIO;
    return nullptr;
  }
  return std::unique_ptr<PrivateFolder>(
      new PrivateFolder(std::move(path), std::move(own), cleaner));
}

PrivateFolder::~PrivateFolder() {
  alive_.reset();
  static_cast<void>(end_of(cleaner_));
}

posix::UniqueFd PrivateFolder::create(std::string_view name, std::string& file_path) {
  const std::string folder = path_ + "/" + std::to_string(++count_);
  if (mkdir(folder.c_str(), 0700) != 0) {
    return posix::UniqueFd();
  }
  file_path = folder + "/" + std::string(name);
  return posix::UniqueFd(open(file_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
}

}  // namespace quoll::share

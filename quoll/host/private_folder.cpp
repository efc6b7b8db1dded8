#include "quoll/host/private_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace quoll::host {

namespace {

std::string temporary_folder() {
  const char* const named = std::getenv("TMPDIR");
  return named != nullptr && named[0] == '/' ? named : "/tmp";
}

/// Waits for the other end of the pipe to be closed, then removes the folder.
[[noreturn]] void clean_when_closed(int pipe_end, const std::string& folder) {
  // What is sent to the whole group of processes is meant for the program, and then this one works.
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    static_cast<void>(std::signal(number, SIG_IGN));
  }
  // Nothing of the program is held open, least of all a pipe that somebody reads to its end.
  dup2(pipe_end, 0);
  close_range(1, ~0U, 0);
  char ignored = 0;
  while (read(0, &ignored, 1) < 0 && errno == EINTR) {
  }
  std::error_code failure;
  std::filesystem::remove_all(folder, failure);
  _exit(0);
}

}  // namespace

std::unique_ptr<PrivateFolder> PrivateFolder::make() {
  std::string path = temporary_folder() + "/quoll-share-XXXXXX";
  std::array<int, 2> ends{-1, -1};
  if (mkdtemp(path.data()) == nullptr) {
    return nullptr;
  }
  pid_t cleaner = -1;
  if (pipe2(ends.data(), O_CLOEXEC) == 0) {
    cleaner = fork();
    if (cleaner == 0) {
      clean_when_closed(ends[0], path);
    }
  }
  const int number = errno;
  const FileHandle reading(ends[0]);
  FileHandle writing(ends[1]);
  if (cleaner < 0) {
    rmdir(path.c_str());
    errno = number;
    return nullptr;
  }
  return std::unique_ptr<PrivateFolder>(
      new PrivateFolder(std::move(path), std::move(writing), cleaner));
}

PrivateFolder::~PrivateFolder() {
  alive_.reset();
  while (waitpid(cleaner_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

FileHandle PrivateFolder::create(std::string_view name, std::string& file_path) {
  const std::string folder = path_ + "/" + std::to_string(++count_);
  if (mkdir(folder.c_str(), 0700) != 0) {
    return FileHandle();
  }
  file_path = folder + "/" + std::string(name);
  return FileHandle(open(file_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
}

}  // namespace quoll::host

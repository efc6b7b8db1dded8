#include "apps/compose/taker.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <deque>
#include <set>
#include <utility>

#include "apps/compose/compose_error.h"
#include "apps/compose/folders.h"
#include "apps/compose/noted_sizes.h"
#include "apps/compose/room.h"
#include "apps/compose/small_file.h"
#include "apps/compose/staging_folder.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/exclusive_rename.h"
#include "quoll/linux/posix/file_contents.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/linux/posix/writing_trial.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/received_command.h"

namespace quoll::compose {
namespace {

constexpr std::size_t kMostFiles = 10'000;

[[noreturn]] void cannot_take(const std::string& what, int error) {
  const bool is_full = error == ENOSPC || error == EDQUOT;
  throw ComposeError(
      what + " cannot be taken into " + taken_folder() + ": " + posix::error_words(error),
      is_full ? "make room on its disk" : "");
}

/// The paths that a command wants attached. Of the command nothing else is looked at here. Throws
/// when it is no command that is taken here.
std::vector<std::string> attachments_in(const std::string& url) {
  try {
    ReceivedCommand received = read_received_command(url);
    if (received.command != commandCompose) {
      throw ComposeError("the command \"" + received.command +
                         "\" needs the mail application; only \"" + std::string(commandCompose) +
                         "\" is taken here");
    }
    return std::move(received.attachments);
  } catch (const foundation::NSException& exception) {
    throw ComposeError(exception.reason());
  }
}

/// A folder for a draft that is not promised yet. It is locked, and removed with this object unless
/// it was promised.
class NewDraft {
 public:
  explicit NewDraft(const std::string& url);

  /// What its message file has at the most, in bytes.
  [[nodiscard]] std::uint64_t size() const { return sizes_.message; }

  /// Gives it the name of a draft, in one step.
  [[nodiscard]] TakenDraft promise();

 private:
  void add_file(const std::string& path, const StagingFolder& staging);
  void keep(int file, const std::string& name);
  void note(const char* name, const std::string& content) const;
  void note_size(const std::string& path);

  posix::TemporaryItem folder_;
  std::set<std::pair<dev_t, ino_t>> files_;
  LeftOutFiles left_out_;
  NotedSizes sizes_;
};

NewDraft::NewDraft(const std::string& url)
    : folder_({open_folder(taken_folder()), taken_folder()}) {
  const std::vector<std::string> attachments = attachments_in(url);
  if (const int error = folder_.make_folder()) {
    cannot_take("the draft", error);
  }
  note("command", url);
  // A text is at most escaped once more than it is in the command, and HTML has its plain text too.
  sizes_.message = 4096 + 2 * url.size();
  if (!attachments.empty()) {
    const StagingFolder staging;
    for (const std::string& path : attachments) {
      add_file(path, staging);
    }
  }
  if (!left_out_.empty()) {
    note("left-out", left_out_.as_records());
    log_left_out(left_out_);
  }
  if (const int error = note_sizes(folder_.fd(), sizes_)) {
    cannot_take("the draft", error);
  }
}

void NewDraft::note(const char* name, const std::string& content) const {
  if (const int error = write_small_file(folder_.fd(), name, content)) {
    cannot_take("the draft", error);
  }
}

// A file that the command names twice is in the draft once.
void NewDraft::add_file(const std::string& path, const StagingFolder& staging) {
  const StagedFile staged = staging.open(path);
  if (!staged.fd) {
    left_out_.add({path, staged.reason});
  } else if (files_.contains({staged.identity.device, staged.identity.inode})) {
    return;
  } else if (files_.size() == kMostFiles) {
    left_out_.add({path, "a draft has at most " + std::to_string(kMostFiles) + " files"});
  } else {
    const std::string name(foundation::last_path_component(path));
    keep(staged.fd.get(), name);
    note_size("files/" + std::to_string(files_.size()) + "/" + name);
    files_.insert({staged.identity.device, staged.identity.inode});
  }
}

// Hard-links the open file, which takes no room and stays when the staged name goes. Where a hard
// link is not possible, it is copied. Its name and mode are not changed.
void NewDraft::keep(int file, const std::string& name) {
  const std::string folder = "files/" + std::to_string(files_.size());
  const std::string path = folder + "/" + name;
  if ((files_.empty() && mkdirat(folder_.fd(), "files", S_IRWXU) != 0) ||
      mkdirat(folder_.fd(), folder.c_str(), S_IRWXU) != 0) {
    cannot_take(name, errno);
  }
  const std::string source = "/proc/self/fd/" + std::to_string(file);
  if (linkat(AT_FDCWD, source.c_str(), folder_.fd(), path.c_str(), AT_SYMLINK_FOLLOW) == 0) {
    return;
  }
  if (errno != EXDEV && errno != EPERM && errno != EMLINK && errno != ENOENT) {
    cannot_take(name, errno);
  }
  const posix::UniqueFd copy(openat(folder_.fd(), path.c_str(),
                                    O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!copy) {
    cannot_take(name, errno);
  }
  if (const auto failure = posix::copy_contents(file, copy.get())) {
    cannot_take(name, failure->number);
  }
  if (const int error = posix::late_write_error(copy.get())) {
    cannot_take(name, error);
  }
}

void NewDraft::note_size(const std::string& path) {
  struct stat status {};
  if (fstatat(folder_.fd(), path.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    cannot_take(path, errno);
  }
  const auto size = static_cast<std::uint64_t>(status.st_size);
  sizes_.files.push_back(size);
  // In Base64 57 bytes become a line of 76, with a line end of two bytes.
  sizes_.message = sum_of(sizes_.message, size / 57 * 78 + 1024);
}

bool is_taken_elsewhere(const std::string& name) {
  return access(message_file(name).c_str(), F_OK) == 0 ||
         access((given_folder() + "/" + name).c_str(), F_OK) == 0;
}

std::string time_of_day() {
  std::array<char, 32> now{};
  const std::time_t time = std::time(nullptr);
  std::tm local{};
  localtime_r(&time, &local);
  std::strftime(now.data(), now.size(), "%Y%m%d-%H%M%S", &local);
  return now.data();
}

// The first name of this second that is free in all three folders. Another program may have
// finished a draft of the same name between the look and the rename, so there is a second look.
TakenDraft NewDraft::promise() {
  const posix::UniqueFd taken = open_folder(taken_folder());
  const std::string time = time_of_day();
  std::string placed;
  for (unsigned number = 0;; ++number) {
    const std::string name = number == 0 ? time : time + "-" + std::to_string(number);
    if (is_taken_elsewhere(name)) {
      continue;
    }
    const int error = placed.empty()
                          ? folder_.place(taken.get(), name)
                          : posix::rename_exclusively(taken.get(), placed, taken.get(), name);
    if (error != 0 && error != EEXIST) {
      cannot_take("the draft", error);
    }
    if (error == 0) {
      placed = name;
      if (!is_taken_elsewhere(name)) {
        return {name, folder_.take_fd()};
      }
    }
  }
}

}  // namespace

std::vector<TakenDraft> take(const std::vector<std::string>& urls) {
  constexpr std::size_t kMostAtOnce = 256;  // each has two descriptors until all are promised
  if (urls.size() > kMostAtOnce) {
    throw ComposeError("a call has at most " + std::to_string(kMostAtOnce) + " drafts");
  }
  require_writable_folders();  // else a draft would be promised that waits for ever
  std::deque<NewDraft> made;
  for (const std::string& url : urls) {
    made.emplace_back(url);
  }
  std::uint64_t needed = 0;
  for (const NewDraft& draft : made) {
    needed = sum_of(needed, draft.size());
  }
  require_room(needed);  // the drafts are written when the sender was answered
  std::vector<TakenDraft> promised;
  try {
    for (NewDraft& draft : made) {
      promised.push_back(draft.promise());
    }
  } catch (...) {
    for (TakenDraft& draft : promised) {
      static_cast<void>(draft.remove());
    }
    throw;
  }
  return promised;
}

void try_taking() {
  try_folders();
  require_room(posix::kSmallDraft);
}

std::string report_of(const std::vector<TakenDraft>& drafts) {
  constexpr std::size_t kLongestName = 300;
  std::string report;
  for (const TakenDraft& draft : drafts) {
    const LeftOutFiles files = draft.left_out();
    report += (report.empty() ? "" : "\n\n") + foundation::printable(message_file(draft.name()));
    for (const LeftOut& file : files.named) {
      report += "\n" + foundation::printable(file.name, kLongestName) + ": " + file.reason;
    }
    if (files.more != 0) {
      report += "\n" + std::to_string(files.more) + " more: they are not named here";
    }
  }
  return report;
}

}  // namespace quoll::compose

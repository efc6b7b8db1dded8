#include "apps/compose/given_draft.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <thread>

#include "apps/compose/compose_error.h"
#include "apps/compose/draft_name.h"
#include "apps/compose/folders.h"
#include "apps/compose/small_file.h"
#include "apps/compose/waiting_files.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/remove_item.h"
#include "quoll/platform/log.h"

namespace quoll::compose {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMark = "given";
constexpr const char* kCopy = "copy";  // a link to a copy outside this folder
constexpr const char* kCommand = "command";

std::string folder_of(const std::string& draft) {
  return given_folder() + "/" + draft;
}

bool has(const std::string& draft, const char* file) {
  return access((folder_of(draft) + "/" + file).c_str(), F_OK) == 0;
}

/// Locks the draft's folder, also while a list looks at it for a moment. None with `errno` set.
posix::UniqueFd locked_soon(const std::string& draft) {
  constexpr int kTries = 10;
  constexpr std::chrono::milliseconds kPause{10};
  posix::UniqueFd folder = locked_folder(folder_of(draft));
  for (int i = 0; !folder && errno == EWOULDBLOCK && i < kTries; ++i) {
    std::this_thread::sleep_for(kPause);
    folder = locked_folder(folder_of(draft));
  }
  return folder;
}

[[noreturn]] void cannot_lock(const std::string& draft, int error) {
  throw ComposeError(error == EWOULDBLOCK
                         ? "another program works on the draft " + draft + "; try again later"
                         : folder_of(draft) + " cannot be locked: " + std::strerror(error));
}

void require_removed(int error, const std::string& path) {
  if (error != 0) {
    throw ComposeError(path + " cannot be removed: " + posix::error_words(error));
  }
}

std::string place_of(std::size_t k, const std::string& name) {
  return "files/" + std::to_string(k) + "/" + name;
}

/// Answers 0 or the first `errno` value.
int remove_all_but_note(int folder) {
  std::vector<std::string> names;
  int first = posix::list_folder(folder, names);
  for (const std::string& name : names) {
    const int error = name != kOffered ? posix::remove_item(folder, name) : 0;
    first = first != 0 ? first : error;
  }
  return first;
}

/// A snap can read its own folder in the home, and no hidden folder outside it.
std::vector<std::string> folders_of_copy(const std::string& snap) {
  return {"snap", snap, "common", "quoll-compose"};
}

std::string copy_path(const std::string& snap, const std::string& draft) {
  std::string path = home_folder();
  for (const std::string& name : folders_of_copy(snap)) {
    path = foundation::appending_path_component(path, name);
  }
  return foundation::appending_path_component(path, draft + std::string(kMessageEnding));
}

/// Opens the folder below the home, through no link: the snap could have put one there. None with
/// `errno` set.
posix::UniqueFd open_folder_of_copy(const std::string& snap) {
  posix::UniqueFd folder(open(home_folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (const std::string& name : folders_of_copy(snap)) {
    if (folder) {
      folder = posix::open_folder(folder.get(), name);
    }
  }
  return folder;
}

/// Removes the copy that was made of a draft for a snap, and no other file, whatever the note says.
/// Answers 0, also when it is not there any more, or an `errno` value.
int remove_copy(const std::string& draft) {
  std::error_code ignored;
  const fs::path copy = fs::read_symlink(folder_of(draft) + "/" + kCopy, ignored);
  const std::string snap = copy.parent_path().parent_path().parent_path().filename();
  if (copy.empty() || snap.starts_with('.') || copy_path(snap, draft) != copy) {
    return 0;
  }
  const posix::UniqueFd folder = open_folder_of_copy(snap);
  if (folder && unlinkat(folder.get(), copy.filename().c_str(), 0) == 0) {
    return 0;
  }
  return errno == ENOENT || errno == ENOTDIR || errno == ELOOP ? 0 : errno;
}

/// How long ago this note was written; nothing when it is missing. What cannot be read is not old.
std::optional<std::int64_t> age_of_note(int folder, const char* note, const Moment& now) {
  struct stat status {};
  std::string mark;
  if (fstatat(folder, note, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return std::nullopt;
  }
  return read_small_file(folder, note, mark) == 0 ? age_of(mark, status, now) : 0;
}

/// How long ago a client last was offered the draft or got it, or else its folder was changed.
std::int64_t age_of_giving(int folder, const Moment& now) {
  const auto given = age_of_note(folder, kMark, now);
  const auto offered = age_of_note(folder, kOffered, now);
  if (given || offered) {
    constexpr auto kNever = std::numeric_limits<std::int64_t>::max();
    return std::min(given.value_or(kNever), offered.value_or(kNever));
  }
  struct stat status {};
  return fstat(folder, &status) == 0 ? age_of("", status, now) : 0;
}

/// Removes a draft's folder when it is old enough, and the draft when it was given. Of a draft that
/// was perhaps given, the note stays as long as the draft does.
void sweep_one(const std::string& draft, const Moment& now) {
  constexpr std::int64_t kKeptFor = std::int64_t{7} * 24 * 60 * 60;
  const posix::UniqueFd folder = locked_folder(folder_of(draft));
  if (!folder || age_of_giving(folder.get(), now) < kKeptFor) {
    return;
  }
  if (remove_copy(draft) != 0) {
    return;  // a later start tries again
  }
  std::error_code ignored;
  if (has(draft, kMark)) {
    fs::remove(message_file(draft), ignored);
  } else if (has(draft, kOffered) && fs::exists(message_file(draft), ignored)) {
    static_cast<void>(remove_all_but_note(folder.get()));
    return;
  }
  fs::remove_all(folder_of(draft), ignored);
}

}  // namespace

GivenDraft GivenDraft::again(const std::string& draft) {
  make_folders();
  mkdir(folder_of(draft).c_str(), S_IRWXU);  // it may exist already
  posix::UniqueFd folder = locked_soon(draft);
  if (!folder) {
    cannot_lock(draft, errno);
  }
  const bool was_offered = has(draft, kOffered);
  if (const int error = write_small_file(folder.get(), kOffered, mark_of(present_moment()))) {
    throw ComposeError(folder_of(draft) + " cannot be written: " + std::strerror(error));
  }
  return {draft, std::move(folder), was_offered};
}

bool GivenDraft::has_files() const {
  return has(name_, kCommand);
}

GivenDraft::GivenDraft(TakenDraft& taken) : name_(taken.name()), folder_(taken.move_to_given()) {}

std::string GivenDraft::file_path(const std::string& draft, std::size_t k,
                                  const std::string& name) {
  return folder_of(draft) + "/" + place_of(k, name);
}

std::string GivenDraft::text_path(const std::string& draft) {
  return folder_of(draft) + "/" + kText;
}

void GivenDraft::name_files(const std::vector<std::string>& names) const {
  const auto files = waiting_files(folder_.get());
  for (std::size_t k = 0; k < names.size(); ++k) {
    const std::string path = place_of(k, names[k]);
    if (renameat(folder_.get(), path_of(files.at(k)).c_str(), folder_.get(), path.c_str()) != 0) {
      throw ComposeError("a file cannot be put into " + folder_of(name_) + ": " +
                         std::strerror(errno));
    }
  }
}

void GivenDraft::remove_files() const {
  // They go with the folder else. The command first: without it nobody looks for the files.
  for (const char* const item : {kCommand, "files", kToAttach}) {
    static_cast<void>(posix::remove_item(folder_.get(), item));
  }
}

void GivenDraft::add_text(const std::string& text) const {
  const std::string content = text.empty() || text.ends_with('\n') ? text : text + '\n';
  if (const int error = write_small_file(folder_.get(), kText, content)) {
    throw ComposeError(text_path(name_) + " cannot be written: " + std::strerror(error));
  }
}

std::string GivenDraft::copy_message_for(const std::string& snap) const {
  std::string copy = copy_path(snap, name_);
  const std::string folder = fs::path(copy).parent_path();
  std::error_code error;
  fs::create_directories(fs::path(folder).parent_path(), error);
  mkdir(folder.c_str(), S_IRWXU);
  // A link would lead us to write among the user's own files.
  if (!open_folder_of_copy(snap)) {
    throw ComposeError(folder + " is no folder, or a link, so the draft cannot be copied there");
  }
  unlinkat(folder_.get(), kCopy, 0);
  fs::remove(copy, error);
  fs::create_symlink(copy, folder_of(name_) + "/" + kCopy, error);
  if (error || !fs::copy_file(message_file(name_), copy, error)) {
    throw ComposeError("the draft cannot be copied into " + folder + ": " + error.message());
  }
  return copy;
}

void GivenDraft::mark() const noexcept {
  try {
    if (const int error = write_small_file(folder_.get(), kMark, mark_of(present_moment()))) {
      platform::log("%@ cannot be marked as given: %@", name_, std::strerror(error));
    }
  } catch (const std::exception& failure) {
    platform::log("%@", failure.what());
  }
}

void GivenDraft::take_back() const noexcept {
  if (!was_offered_) {
    unlinkat(folder_.get(), kOffered, 0);
  }
}

Giving giving_of(const std::string& draft) {
  posix::UniqueFd folder;
  if (!has(draft, kMark) && has(draft, kOffered)) {
    folder = locked_folder(folder_of(draft), LOCK_SH);
    if (!folder && errno == EWOULDBLOCK) {
      return Giving::kNow;
    }
  }
  // With the lock, since what was being given a moment ago may be given by now.
  return has(draft, kMark) ? Giving::kGiven
                           : (has(draft, kOffered) ? Giving::kPerhaps : Giving::kNone);
}

void remove_written(const std::string& draft) {
  const posix::UniqueFd folder = locked_soon(draft);
  if (!folder && errno != ENOENT) {
    cannot_lock(draft, errno);
  }
  // The message file is the last that goes: while it is there, the draft is listed.
  if (folder) {
    require_removed(remove_copy(draft), folder_of(draft) + "/" + kCopy);
    require_removed(remove_all_but_note(folder.get()), folder_of(draft));
  }
  const std::string path = message_file(draft);
  require_removed(unlink(path.c_str()) == 0 || errno == ENOENT ? 0 : errno, path);
  if (folder) {
    const posix::UniqueFd given = open_folder(given_folder());
    require_removed(posix::remove_item(given.get(), draft), folder_of(draft));
  }
}

void sweep_given(const Moment& now) {
  const posix::UniqueFd given(open(given_folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  std::vector<std::string> drafts;
  if (given) {
    static_cast<void>(posix::list_folder(given.get(), drafts));
  }
  std::erase_if(drafts, [](const std::string& name) { return !is_draft_name(name); });
  for (const std::string& draft : drafts) {
    sweep_one(draft, now);
  }
}

}  // namespace quoll::compose

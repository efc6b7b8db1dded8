#include "apps/compose/given_drafts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "apps/compose/cannot_compose.h"
#include "apps/compose/places.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"
#include "quoll/platform/files.h"
#include "quoll/platform/log.h"

namespace quoll::compose {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMark = "given";
constexpr const char* kCopy = "copy";  // a link to a copy outside this folder
constexpr std::int64_t kKeptFor = std::int64_t{7} * 24 * 60 * 60;

std::string reason() {
  return std::strerror(errno);
}

void write_file(const std::string& path, const std::string& content) {
  const posix::UniqueFd file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file || !posix::write_all(file.get(), content)) {
    throw CannotCompose(path + " cannot be written: " + reason());
  }
}

/// The age of a mark in seconds. Negative when its time is in the future: then it counts from that
/// time on.
std::int64_t age_of(const std::string& mark, const struct stat& status, const Moment& now) {
  std::ifstream file(mark);
  std::string boot;
  std::int64_t since_boot = 0;
  const bool is_of_this_boot = file >> boot >> since_boot && boot == now.boot;
  return is_of_this_boot ? now.since_boot - since_boot : now.time - status.st_mtim.tv_sec;
}

void clean(const std::string& folder, const std::string& draft, const Moment& now) {
  const std::string mark = foundation::appending_path_component(folder, kMark);
  struct stat status {};
  const bool is_given = lstat(mark.c_str(), &status) == 0;
  if (!is_given && lstat(folder.c_str(), &status) != 0) {
    return;
  }
  const std::int64_t age = age_of(mark, status, now);
  if (age < kKeptFor) {
    return;
  }
  std::error_code ignored;  // the next program tries again
  const fs::path copy =
      fs::read_symlink(foundation::appending_path_component(folder, kCopy), ignored);
  if (!copy.empty()) {
    fs::remove(copy, ignored);
  }
  if (is_given) {
    fs::remove(draft, ignored);
  }
  fs::remove_all(folder, ignored);
}

}  // namespace

GivenDraft::GivenDraft(const std::string& draft)
    : draft_(draft),
      folder_(foundation::appending_path_component(
          given_folder(),
          foundation::deleting_path_extension(foundation::last_path_component(draft)))) {
  if (mkdir(folder_.c_str(), S_IRWXU) != 0) {
    throw CannotCompose("the folder " + folder_ + " cannot be made: " + reason());
  }
}

// Each file gets a folder of its own, because two may have the same name.
std::string GivenDraft::add(const TakenFile& file, const std::string& name) {
  const std::string folder = folder_ + "/" + std::to_string(files_++);
  std::string path = folder + "/" + name;
  if (mkdir(folder.c_str(), S_IRWXU) != 0 || chmod(file.path.c_str(), S_IRUSR | S_IWUSR) != 0 ||
      rename(file.path.c_str(), path.c_str()) != 0) {
    throw CannotCompose(file.name + " cannot be put into " + folder + ": " + reason());
  }
  return path;
}

std::string GivenDraft::add_text(const std::string& text) const {
  std::string path = folder_ + "/text.txt";
  write_file(path, text.empty() || text.ends_with('\n') ? text : text + '\n');
  return path;
}

std::string GivenDraft::copy_to(const std::string& folder) const {
  std::error_code error;
  fs::create_directories(folder, error);
  fs::permissions(folder, fs::perms::owner_all, error);
  std::string copy =
      foundation::appending_path_component(folder, foundation::last_path_component(draft_));
  fs::create_symlink(copy, folder_ + "/" + kCopy, error);
  if (error || !fs::copy_file(draft_, copy, error)) {
    throw CannotCompose("the draft cannot be copied into " + folder + ": " + error.message());
  }
  return copy;
}

void GivenDraft::mark() const noexcept {
  try {
    const Moment now = present_moment();
    write_file(folder_ + "/" + kMark, now.boot + " " + std::to_string(now.since_boot) + "\n");
  } catch (const std::exception& failure) {
    platform::log("%@", failure.what());
  }
}

Moment present_moment() {
  Moment now{.time = std::time(nullptr), .boot = {}, .since_boot = 0};
  std::ifstream("/proc/sys/kernel/random/boot_id") >> now.boot;
  std::timespec since_boot{};
  clock_gettime(CLOCK_BOOTTIME, &since_boot);
  now.since_boot = since_boot.tv_sec;
  return now;
}

void clean_given_drafts(const Moment& now) {
  const std::string given = given_folder();
  const auto names = platform::NSFileManager::defaultManager()->contentsOfDirectoryAtPath(given);
  for (const auto& name : names.value_or(std::vector<std::string>())) {
    clean(foundation::appending_path_component(given, name), drafts_folder() + "/" + name + ".eml",
          now);
  }
}

}  // namespace quoll::compose

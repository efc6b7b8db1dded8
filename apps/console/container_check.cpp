#include "apps/console/container_check.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>

#include "apps/console/staged_copies.h"
#include "apps/share/container_trouble.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/group_containers.h"
#include "quoll/linux/posix/lock_holder.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/linux/posix/writing_trial.h"

namespace quoll::console {

namespace {

namespace fs = std::filesystem;
namespace layout = container::layout;
using State = Finding::State;

std::string in_folder(const std::string& folder, std::string_view name) {
  return foundation::appending_path_component(folder, name);
}

std::size_t count_unfinished(const std::string& container) {
  std::error_code none;
  const fs::directory_iterator unfinished(in_folder(container, layout::unfinished), none);
  return static_cast<std::size_t>(std::distance(unfinished, fs::directory_iterator()));
}

/// Makes the container and closes it to others, and removes what killed shares have left in it.
/// Adds what it did to `done`, and what it could not to `failed`.
void repair_container(const std::string& path, Repairs& repairs) {
  std::error_code error;
  const bool was_there = fs::exists(path, error);
  static_cast<void>(ExtensionUtilities::GroupPath());
  if (!was_there && fs::exists(path, error)) {
    repairs.done.push_back("made " + path);
  }
  constexpr fs::perms kOthers = fs::perms::group_all | fs::perms::others_all;
  if ((fs::status(path, error).permissions() & kOthers) != fs::perms::none && !error) {
    fs::permissions(path, kOthers, fs::perm_options::remove, error);
    (error ? repairs.failed : repairs.done)
        .push_back((error ? "could not close " : "closed ") + path + " to other users");
  }
  const std::size_t before = count_unfinished(path);
  posix::sweep_temporary_items(path);
  const std::size_t after = count_unfinished(path);
  if (after < before) {
    repairs.done.push_back("removed what killed shares left: " + std::to_string(before - after));
  }
}

Finding container(const std::string& path) {
  const std::string name = "container";
  if (auto trouble = share::container_trouble()) {
    return {name, State::kBroken, trouble->found, trouble->advice};
  }
  struct stat status {};
  if (stat(path.c_str(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    return {name, State::kWorthKnowing, path + " is open to other users",
            "chmod 700 \"" + path + "\", or quollctl doctor --fix"};
  }
  return {name, State::kGood, path, ""};
}

constexpr std::uintmax_t kMebibyte = std::uintmax_t{1} << 20U;

Finding space(const char* name, const std::string& folder, std::uintmax_t little) {
  constexpr std::uintmax_t kKibibyte = 1024;
  std::error_code error;
  const std::string there = share::existing_part(folder);
  const std::uintmax_t free = fs::space(there, error).available;
  if (error) {
    return {name, State::kGood, "not known", ""};
  }
  const std::string found = (free < kMebibyte ? std::to_string(free / kKibibyte) + " KiB"
                                              : std::to_string(free / kMebibyte) + " MiB") +
                            " free in " + there;
  if (free < posix::kSmallDraft) {
    return {name, State::kBroken, found, "make room there: nothing can be kept"};
  }
  return free < little ? Finding{name, State::kWorthKnowing, found,
                                 "make room there before large files are shared"}
                       : Finding{name, State::kGood, found, ""};
}

/// The room for the shared folder, and that for the drafts when it is on another disk.
std::vector<Finding> spaces(const std::string& container) {
  constexpr std::uintmax_t kLittle = 100 * kMebibyte;
  constexpr std::uintmax_t kLittleForDrafts = 25 * kMebibyte;  // a draft can be as large
  std::vector<Finding> findings{space("space", container, kLittle)};
  struct stat of_container {};
  struct stat of_drafts {};
  if (stat(share::existing_part(container).c_str(), &of_container) == 0 &&
      stat(share::existing_part(drafts_place()).c_str(), &of_drafts) == 0 &&
      of_container.st_dev != of_drafts.st_dev) {
    findings.push_back(space("space for drafts", drafts_place(), kLittleForDrafts));
  }
  return findings;
}

/// Whether a share waits for the holder of the lock in this file. It locks its turn and the staging
/// folder for itself, and what is above that folder together with others.
bool is_waited_for(const std::string& file, const posix::LockHolder& holder) {
  const std::string data = "/" + ExtensionUtilities::GroupFolderName();
  return file == layout::turn || file == posix::lock_file_name(in_folder(data, layout::staging)) ||
         (!holder.is_shared &&
          (file == posix::lock_file_name("/") || file == posix::lock_file_name(data)));
}

Finding held_lock(const posix::LockHolder& holder, bool is_waited_for) {
  if (holder.process == 0) {
    return {"locks", State::kWorthKnowing, "a program uses the shared folder",
            "wait for it: the next share does too"};
  }
  std::ostringstream who;
  const std::string number = std::to_string(holder.process);
  who << (holder.program.empty() ? "a program" : holder.program) << " (process " << number;
  if (holder.began != 0) {  // else it has ended, and another has its lock
    who << ", started " << std::put_time(std::localtime(&holder.began), "%F %T");
  }
  who << ")";
  if (is_waited_for && holder.is_stopped) {
    return {"locks", State::kBroken,
            who.str() + " was stopped in its work on the shared folder: shares wait until it ends",
            "kill -CONT " + number + " lets it go on, kill -KILL " + number + " ends it"};
  }
  return {"locks", State::kWorthKnowing, who.str() + " uses the shared folder: a new share waits",
          "wait for it; if it hangs, kill " + number + " ends it"};
}

/// Who uses the shared folder; of several the one that shares wait for in vain.
Finding locks(const std::string& container) {
  Finding finding{"locks", State::kGood, "nobody holds one", ""};
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(in_folder(container, layout::locks), none)) {
    const auto holder = posix::lock_holder(entry.path());
    if (holder && finding.state != State::kBroken) {
      finding = held_lock(*holder, is_waited_for(entry.path().filename(), *holder));
    }
  }
  return finding;
}

Finding copies() {
  const StagedCopies copies = staged_copies();
  if (!copies.trouble.empty()) {
    return {"shared copies", State::kWorthKnowing, "not known: " + copies.trouble, copies.advice};
  }
  if (copies.files == 0) {
    return {"shared copies", State::kGood, "none", ""};
  }
  return {"shared copies", State::kGood,
          in_words(copies) + " of the last share, until the next one, in " + copies.folder,
          "quollctl forget removes them now"};
}

}  // namespace

std::vector<Finding> check_container(Repairs* repairs) {
  const auto folder = posix::group_containers_folder();
  if (!folder) {
    return {container("")};
  }
  const std::string path = in_folder(*folder, ExtensionUtilities::application_group);
  if (repairs != nullptr) {
    repair_container(path, *repairs);
  }
  const auto holders = locks(path);  // before this program opens any
  std::vector<Finding> findings{container(path)};
  std::ranges::move(spaces(path), std::back_inserter(findings));
  findings.insert(findings.end(), {holders, copies()});
  return findings;
}

std::string drafts_place() {
  const auto beside = posix::group_containers_folder([](const char* name) {
    return std::string_view(name) == "QUOLL_GROUP_CONTAINERS" ? nullptr : std::getenv(name);
  });
  return fs::path(beside.value_or("/")).parent_path() / "quoll-compose";
}

}  // namespace quoll::console

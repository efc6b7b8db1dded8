#include "tests/crash/snapshot.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "tests/support/temporary_folder.h"

namespace quoll::crash {

namespace {

namespace fs = std::filesystem;

std::string state_of(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    return "gone";
  }
  std::string state = "mode " + std::to_string(status.st_mode);
  if (S_ISDIR(status.st_mode)) {
    return state;
  }
  state += ", links " + std::to_string(status.st_nlink) + ", number " +
           std::to_string(status.st_ino) + ", written " + std::to_string(status.st_mtim.tv_sec) +
           "." + std::to_string(status.st_mtim.tv_nsec) + ", changed " +
           std::to_string(status.st_ctim.tv_sec) + "." + std::to_string(status.st_ctim.tv_nsec);
  if (S_ISREG(status.st_mode)) {
    state += ", bytes " + test::read_file(path);
  } else if (S_ISLNK(status.st_mode)) {
    state += ", to " + fs::read_symlink(path).string();
  }
  return state;
}

void add(Snapshot& all, const std::string& path, const std::vector<std::string>& but) {
  if (std::find(but.begin(), but.end(), path) != but.end()) {
    return;
  }
  all[path] = state_of(path);
  if (fs::is_directory(fs::symlink_status(path))) {
    for (const std::string& name : names_in(path)) {
      add(all, path + "/" + name, but);
    }
  }
}

}  // namespace

Snapshot snapshot(const std::vector<std::string>& paths, const std::vector<std::string>& but) {
  Snapshot all;
  for (const std::string& path : paths) {
    add(all, path, but);
  }
  return all;
}

std::vector<std::string> differences(const Snapshot& before, const Snapshot& after) {
  std::set<std::string> paths;
  for (const auto* const one : {&before, &after}) {
    const auto& other = one == &before ? after : before;
    for (const auto& [path, state] : *one) {
      const auto found = other.find(path);
      if (found == other.end() || found->second != state) {
        paths.insert(path);
      }
    }
  }
  return {paths.begin(), paths.end()};
}

std::vector<std::string> names_in(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code missing;
  for (const auto& entry : fs::directory_iterator(folder, missing)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace quoll::crash

#include "tests/support/memory_files.h"

#include <cerrno>
#include <utility>

#include "quoll/foundation/path.h"

namespace quoll::test {

namespace {

using foundation::Bytes;
using foundation::Error;
using foundation::NSURL;

constexpr std::size_t kLongestName = 255;

/// An absolute path without slashes at the end; empty for what is no path.
std::string plain(std::string_view path) {
  if (path.empty() || path.find('\0') != std::string_view::npos) {
    return {};
  }
  std::string out(path);
  if (!path.starts_with('/')) {
    out = "/home/" + out;
  }
  while (out.size() > 1 && out.ends_with('/')) {
    out.pop_back();
  }
  return out;
}

std::string plain(const std::shared_ptr<NSURL>& url) {
  return plain(foundation::file_system_path(url).value_or(""));
}

std::string parent_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

std::string below(const std::string& path) {
  return path == "/" ? path : path + "/";
}

/// The error of an `errno` value; 0 is success.
std::optional<Error> error_of(int number, std::string_view path) {
  return number == 0 ? std::nullopt : std::optional(foundation::file_error(number, path, true));
}

}  // namespace

MemoryFiles::MemoryFiles() : nodes_{{"/", Node()}, {"/home", Node()}} {}

std::vector<std::string> MemoryFiles::tree(const std::string& path) const {
  std::vector<std::string> out;
  if (nodes_.contains(path)) {
    out.push_back(path);
  }
  const std::string start = below(path);
  for (auto at = nodes_.lower_bound(start); at != nodes_.end() && at->first.starts_with(start);
       ++at) {
    if (at->first != path) {
      out.push_back(at->first);
    }
  }
  return out;
}

int MemoryFiles::check_parent(const std::string& path) const {
  if (path.empty()) {
    return ENOENT;
  }
  if (foundation::last_path_component(path).size() > kLongestName) {
    return ENAMETOOLONG;
  }
  const auto parent = nodes_.find(parent_of(path));
  if (parent == nodes_.end()) {
    return ENOENT;
  }
  return parent->second ? ENOTDIR : 0;
}

int MemoryFiles::make_folders(const std::string& path) {
  for (std::size_t end = 0; end != std::string::npos;) {
    end = path.find('/', end + 1);
    const std::string folder = path.substr(0, end);
    if (const int number = check_parent(folder)) {
      return number;
    }
    if (nodes_.try_emplace(folder).first->second) {
      return EEXIST;
    }
  }
  return 0;
}

std::shared_ptr<NSURL> MemoryFiles::containerURLForSecurityApplicationGroupIdentifier(
    std::string_view group) {
  const std::lock_guard lock(mutex_);
  if (group.empty() || group == "." || group == ".." ||
      group.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) {
    return nullptr;
  }
  const std::string path = "/containers/" + std::string(group);
  return make_folders(path) == 0 ? NSURL::file_url(path, true) : nullptr;
}

std::optional<Error> MemoryFiles::removeItemAtURL(const std::shared_ptr<NSURL>& url) {
  const std::lock_guard lock(mutex_);
  const std::string path = plain(url);
  const auto doomed = path.empty() ? std::vector<std::string>() : tree(path);
  for (const std::string& entry : doomed) {
    nodes_.erase(entry);
  }
  return error_of(doomed.empty() ? ENOENT : 0, path);
}

std::optional<Error> MemoryFiles::createDirectoryAtURL(const std::shared_ptr<NSURL>& url) {
  const std::lock_guard lock(mutex_);
  const std::string path = plain(url);
  return error_of(path.empty() ? ENOENT : make_folders(path), path);
}

std::optional<Error> MemoryFiles::copyItemAtPath(std::string_view source,
                                                 std::string_view destination) {
  const std::lock_guard lock(mutex_);
  const std::string from = plain(source);
  const std::string to = plain(destination);
  bool writing = true;
  int number = 0;
  if (from.empty() || !nodes_.contains(from)) {
    writing = false;
    number = ENOENT;
  } else if (number = check_parent(to); number == 0 && nodes_.contains(to)) {
    number = EEXIST;
  } else if (number == 0 && (below(to)).starts_with(below(from))) {
    number = EINVAL;
  }
  if (number == 0) {
    for (const std::string& entry : tree(from)) {
      nodes_.emplace(to + entry.substr(from.size()), nodes_.at(entry));
    }
  }
  if (number == 0) {
    return std::nullopt;
  }
  Error error = foundation::file_error(number, writing ? destination : source, writing);
  if (writing) {
    error.user_info.emplace_back("NSSourceFilePathErrorKey", std::string(source));
  } else {
    error.user_info.emplace_back("NSDestinationFilePath", std::string(destination));
  }
  return error;
}

bool MemoryFiles::fileExistsAtPath(std::string_view path) {
  const std::lock_guard lock(mutex_);
  return nodes_.contains(plain(path));
}

bool MemoryFiles::isDirectoryAtPath(std::string_view path) {
  const std::lock_guard lock(mutex_);
  const auto found = nodes_.find(plain(path));
  return found != nodes_.end() && !found->second;
}

std::optional<std::vector<std::string>> MemoryFiles::contentsOfDirectoryAtPath(
    std::string_view path) {
  const std::lock_guard lock(mutex_);
  const std::string folder = plain(path);
  const auto found = nodes_.find(folder);
  if (found == nodes_.end() || found->second) {
    return std::nullopt;
  }
  std::vector<std::string> names;
  for (const std::string& entry : tree(folder)) {
    if (entry != folder && parent_of(entry) == folder) {
      names.emplace_back(foundation::last_path_component(entry));
    }
  }
  return names;
}

platform::FileContents MemoryFiles::contentsAtPath(std::string_view path) {
  const std::lock_guard lock(mutex_);
  const auto found = nodes_.find(plain(path));
  if (found == nodes_.end() || !found->second) {
    return foundation::file_error(found == nodes_.end() ? ENOENT : EISDIR, path, false);
  }
  return *found->second;
}

std::optional<Error> MemoryFiles::writeToFile(const Bytes& data, std::string_view path,
                                              platform::NSDataWritingOptions /*options*/) {
  const std::lock_guard lock(mutex_);
  const std::string file = plain(path);
  int number = check_parent(file);
  const auto found = nodes_.find(file);
  if (number == 0 && found != nodes_.end() && !found->second) {
    number = EISDIR;
  }
  if (number == 0) {
    nodes_.insert_or_assign(file, data);
  }
  return error_of(number, path);
}

}  // namespace quoll::test

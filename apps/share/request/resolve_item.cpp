#include "apps/share/request/resolve_item.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

#include "apps/share/request/resolve_link.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/percent.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/file_kind.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

namespace {

using foundation::NSURL;

constexpr const char* kNoSuchFile = "no such file";

bool exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

/// None when the working folder has no path by which a file in it can be opened.
std::optional<std::string> absolute(std::string_view path) {
  if (path.empty() || path.starts_with('/')) {
    return std::string(path);
  }
  std::array<char, PATH_MAX> folder{};
  const char* const found = getcwd(folder.data(), folder.size());
  if (found == nullptr || *found != '/') {  // "(unreachable)..." lies outside the root
    return std::nullopt;
  }
  return foundation::appending_path_component(found, path);
}

bool is_folder(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// `path` is absolute. A folder is called as it was picked, but "." and ".." are no names.
ResolvedItem resolve_folder(const std::string& path) {
  if (access(path.c_str(), R_OK | X_OK) != 0) {
    return {nullptr, posix::error_words(errno)};
  }
  const std::string last(foundation::last_path_component(path));
  std::array<char, PATH_MAX> real{};
  if (last == "." || last == "..") {
    if (realpath(path.c_str(), real.data()) == nullptr) {
      return {nullptr, posix::error_words(errno)};
    }
    return {NSURL::file_url(real.data(), true), {}};
  }
  return {NSURL::file_url(path, true), {}};
}

ResolvedItem resolve_file(std::string_view path) {
  const auto whole = absolute(path);
  if (!whole) {
    return {nullptr, "the working folder has no path that can be used"};
  }
  if (is_folder(*whole)) {
    return resolve_folder(*whole);
  }
  if (auto refusal = why_not_shareable(*whole)) {
    return {nullptr, *refusal};
  }
  return {NSURL::file_url(*whole, false), {}};
}

bool is_this_machine(std::string_view host) {
  const std::string wanted = foundation::ascii_lower_case(host);
  std::array<char, 256> name{};
  if (wanted.empty() || wanted == "localhost") {
    return true;
  }
  if (gethostname(name.data(), name.size() - 1) != 0) {
    return false;
  }
  const std::string own = foundation::ascii_lower_case(name.data());
  return wanted == own || wanted == own.substr(0, own.find('.'));
}

/// `rest` is what follows "file:".
ResolvedItem resolve_file_url(std::string_view rest) {
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    const std::size_t slash = std::min(rest.find('/'), rest.size());
    if (!is_this_machine(rest.substr(0, slash))) {
      return {nullptr, "the file is on another computer"};
    }
    rest.remove_prefix(slash);
  }
  const std::string raw(rest);
  const auto decoded = foundation::percent_decode_bytes(rest);
  if (decoded && decoded->find('\0') != std::string::npos) {
    return {nullptr, "the name holds a zero byte"};
  }
  // Some programs escape and some do not, so a "%" may be either: the disk knows.
  const bool is_raw = !decoded || (!exists(*decoded) && exists(raw));
  return resolve_file(is_raw ? raw : *decoded);
}

}  // namespace

std::optional<std::string> why_not_shareable(const std::string& path) {
  struct stat status {};
  // Looked at before it is opened: opening rewinds tapes and wakes the writers of pipes.
  if (stat(path.c_str(), &status) != 0) {
    return errno == ENOENT || errno == ENOTDIR ? kNoSuchFile : posix::error_words(errno);
  }
  if (auto kind = posix::other_kind(status.st_mode)) {
    return kind;
  }
  const posix::UniqueFd file = posix::open_file(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!file || fstat(file.get(), &status) != 0) {
    return posix::error_words(errno);
  }
  return posix::other_kind(status.st_mode);
}

ResolvedItem resolve_item(std::string_view given, const Mounts& mounts) {
  if (given.empty()) {
    return {nullptr, "the name is empty"};
  }
  if (given.find('\0') != std::string_view::npos) {
    return {nullptr, "the name holds a zero byte"};
  }
  if (exists(std::string(given))) {
    return resolve_file(given);
  }
  const std::string_view text = foundation::trim(given);
  const auto scheme = link_scheme(text);
  if (scheme == "file") {
    const std::string_view untrimmed =
        given.substr(static_cast<std::size_t>(text.data() - given.data()));
    return resolve_file_url(untrimmed.substr(scheme->size() + 1));
  }
  if (scheme) {
    if (const auto path =
            mounts && is_remote_scheme(*scheme) ? mounts(with_escapes(text)) : std::nullopt) {
      return resolve_file(*path);
    }
    return resolve_link(text);
  }
  if (is_web_host(text)) {
    return resolve_link("http://" + std::string(text));
  }
  ResolvedItem file = resolve_file(given);
  if (file.refusal == kNoSuchFile) {
    file.advice = what_was_meant(text);
  }
  return file;
}

}  // namespace quoll::share

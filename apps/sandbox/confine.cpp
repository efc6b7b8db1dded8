#include "apps/sandbox/confine.h"

#include <link.h>
#include <sys/prctl.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <sstream>

#include "apps/sandbox/path_rules.h"
#include "apps/sandbox/sanitizer_build.h"
#include "apps/sandbox/share_calls.h"
#include "quoll/platform/log.h"

namespace quoll::sandbox {

namespace {

using Access = PathRules::Access;

/// What the C library and the dynamic loader of every program read.
constexpr const char* kAlwaysReadable[] = {
    "/usr", "/lib", "/lib64", "/etc/ld.so.cache", "/etc/localtime", "/dev/urandom"};

/// The path of the dynamic loader, as this program names it; empty when it names none. The kernel
/// starts the loader together with a program.
std::string loader_path() {
  std::string path;
  ::dl_iterate_phdr(
      [](dl_phdr_info* program, std::size_t, void* out) {
        for (int i = 0; i < program->dlpi_phnum; ++i) {
          const auto& header = program->dlpi_phdr[i];
          if (header.p_type == PT_INTERP) {
            *static_cast<std::string*>(out) =
                // NOLINTNEXTLINE(performance-no-int-to-ptr): an address is what the header holds
                reinterpret_cast<const char*>(program->dlpi_addr + header.p_vaddr);
          }
        }
        return 1;  // the first entry is this program; stop here
      },
      &path);
  return path;
}

/// True when a folder is so far up that letting it be read would let the user's files be read.
bool holds_home(const std::string& folder) {
  const char* const home = std::getenv("HOME");
  return folder.empty() || (home != nullptr && (std::string(home) + "/").starts_with(folder + "/"));
}

/// The folders of the libraries of this process, wherever a system keeps them: a library opens
/// others beside it. And those that whoever built this has named.
std::set<std::string> library_folders() {
  std::set<std::string> folders;
  ::dl_iterate_phdr(
      [](dl_phdr_info* library, std::size_t, void* out) {
        const std::string path(library->dlpi_name);
        const std::string folder = path.substr(0, path.rfind('/'));
        if (path.starts_with('/') && !holds_home(folder)) {
          static_cast<std::set<std::string>*>(out)->insert(folder);
        }
        return 0;
      },
      &folders);
  std::istringstream named(QUOLL_SANDBOX_FOLDERS);
  for (std::string folder; std::getline(named, folder, ':');) {
    folders.insert(folder);
  }
  return folders;
}

int enforce_paths(const Confinement& wanted, int version) {
  PathRules rules(version);
  for (const char* const path : kAlwaysReadable) {
    rules.allow(path, Access::kRead);
  }
  for (const std::string& folder : library_folders()) {
    rules.allow(folder, Access::kRead);
  }
  if (kSanitizerBuild) {
    rules.allow("/proc/self", Access::kRead);
  }
  rules.allow("/dev/null", Access::kWriteFile);
  for (const std::string& path : wanted.readable) {
    rules.allow(path, Access::kReadFile);
  }
  for (const std::string& path : wanted.listable) {
    rules.allow(path, Access::kRead);
  }
  for (const std::string& path : wanted.writable) {
    rules.allow(path, Access::kChange);
  }
  for (const std::string& path : wanted.executable) {
    rules.allow(path, Access::kExecute);
  }
  if (!wanted.executable.empty()) {
    rules.allow(loader_path(), Access::kExecute);
  }
  return rules.enforce();
}

/// A part of a line that says what the kernel refused; empty when it took everything.
std::string failed(const char* what, int number) {
  return number == 0 ? "" : std::string(what) + ": " + std::strerror(number) + "; ";
}

}  // namespace

bool confine(const Confinement& wanted) {
  const int version = PathRules::kernel_version();
  std::string missing = failed("no rules for paths", enforce_paths(wanted, version));
  if (missing.empty() && version < PathRules::kWholeVersion) {
    missing = "rules for paths of version " + std::to_string(version) + ", not " +
              std::to_string(PathRules::kWholeVersion) + "; ";
  }
  missing += failed("no filter of system calls", enforce_share_calls());
  if (missing.empty()) {
    return true;
  }
  missing.resize(missing.size() - 2);
  platform::log("confine: this kernel offers less than is wanted: %@", missing);
  return false;
}

}  // namespace quoll::sandbox

#include "linux/posix/confine.h"

#include <fcntl.h>
#include <link.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "linux/posix/unique_fd.h"
#include "quoll/platform/log.h"

namespace quoll::posix {

namespace {

// What newer kernels know and the system's header may not.
constexpr std::uint64_t kTruncate = 1ULL << 14;       // since version 3
constexpr std::uint64_t kDeviceControl = 1ULL << 15;  // since version 5
constexpr std::uint64_t kBindTcp = 1ULL << 0;         // since version 4
constexpr std::uint64_t kConnectTcp = 1ULL << 1;
constexpr std::uint64_t kScopeSignal = 1ULL << 1;  // since version 6
// The scope of abstract sockets is not used: some desktops have their session bus on one.

/// `struct landlock_ruleset_attr` as of version 6; a kernel is given as much of it as it knows.
struct RulesetAttributes {
  std::uint64_t files;
  std::uint64_t net;
  std::uint64_t scoped;
};

constexpr std::uint64_t kRead = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t kExecute = kRead | LANDLOCK_ACCESS_FS_EXECUTE;
constexpr std::uint64_t kWrite = kRead | LANDLOCK_ACCESS_FS_WRITE_FILE |
                                 LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                                 LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                                 LANDLOCK_ACCESS_FS_MAKE_SYM | LANDLOCK_ACCESS_FS_REFER | kTruncate;
/// What a rule about something that is no folder can hold.
constexpr std::uint64_t kOfFiles = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_WRITE_FILE |
                                   LANDLOCK_ACCESS_FS_READ_FILE | kTruncate | kDeviceControl;
constexpr std::uint64_t kAll = kExecute | kWrite | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                               LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                               LANDLOCK_ACCESS_FS_MAKE_BLOCK | kDeviceControl;

/// Read by the C library and the dynamic loader in every program.
constexpr const char* kAlwaysReadable[] = {"/usr",           "/lib",
                                           "/lib64",         "/etc/ld.so.cache",
                                           "/etc/localtime", "/etc/nsswitch.conf",
                                           "/etc/passwd",    "/proc/self",
                                           "/dev/urandom"};

std::uint64_t known_to(long version) {
  std::uint64_t known = kAll;
  if (version < 3) {
    known &= ~kTruncate;
  }
  if (version < 5) {
    known &= ~kDeviceControl;
  }
  return known;
}

class Ruleset {
 public:
  explicit Ruleset(long version) : known_(known_to(version)) {
    const RulesetAttributes attributes{known_, version >= 4 ? kBindTcp | kConnectTcp : 0,
                                       version >= 6 ? kScopeSignal : 0};
    const std::size_t size = version >= 6   ? sizeof attributes
                             : version >= 4 ? 2 * sizeof(std::uint64_t)
                                            : sizeof(std::uint64_t);
    fd_.reset(static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, size, 0)));
    failure_ = fd_ ? 0 : errno;
  }

  void allow(const char* path, std::uint64_t access) {
    const UniqueFd entry(::open(path, O_PATH | O_CLOEXEC));
    struct stat status {};
    if (failure_ != 0 || !entry || ::fstat(entry.get(), &status) != 0) {
      return;  // what is not there cannot be used either
    }
    landlock_path_beneath_attr rule{};
    rule.allowed_access = access & known_ & (S_ISDIR(status.st_mode) ? ~0ULL : kOfFiles);
    rule.parent_fd = entry.get();
    if (::syscall(SYS_landlock_add_rule, fd_.get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0) != 0 &&
        errno != EBADFD) {  // a pipe or the like, which is no matter of paths
      failure_ = errno;
    }
  }

  /// Answers 0 or an `errno` value.
  int enforce() {
    if (failure_ == 0 && (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
                          ::syscall(SYS_landlock_restrict_self, fd_.get(), 0) != 0)) {
      failure_ = errno;
    }
    return failure_;
  }

 private:
  std::uint64_t known_;
  UniqueFd fd_;
  int failure_ = 0;
};

/// The path of the dynamic loader, which the kernel starts together with a program; as this program
/// names it, empty when it names none.
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
        return 1;  // the first is this program
      },
      &path);
  return path;
}

void allow_all(Ruleset& rules, const std::vector<std::string>& paths, std::uint64_t access) {
  for (const std::string& path : paths) {
    rules.allow(path.c_str(), access);
  }
}

}  // namespace

bool confine(const Confinement& wanted) {
  const long version =
      ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  // Version 1 forbids every move from one folder to another, which a copy needs.
  if (version < 2) {
    platform::log("confine: this program is not confined: %@",
                  version < 0 ? std::strerror(errno) : "the kernel's Landlock is too old");
    return false;
  }
  Ruleset rules(version);
  for (const char* path : kAlwaysReadable) {
    rules.allow(path, kRead);
  }
  rules.allow("/dev/null", kRead | LANDLOCK_ACCESS_FS_WRITE_FILE | kTruncate);
  allow_all(rules, wanted.readable, kRead);
  allow_all(rules, wanted.writable, kWrite);
  allow_all(rules, wanted.executable, kExecute);
  if (!wanted.executable.empty()) {
    rules.allow(loader_path().c_str(), kExecute);
  }
  if (const int number = rules.enforce()) {
    platform::log("confine: this program is not confined: %@", std::strerror(number));
    return false;
  }
  return true;
}

}  // namespace quoll::posix

#include "apps/sandbox/path_rules.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace quoll::sandbox {

namespace {

// Constants of newer kernels, which the system's header may not have.
constexpr int kWithMoves = 2;
constexpr int kWithTruncate = 3;
constexpr int kWithTcp = 4;
constexpr int kWithDevices = 5;
constexpr int kWithScopes = 6;
constexpr std::uint64_t kTruncate = 1ULL << 14;
constexpr std::uint64_t kDeviceControl = 1ULL << 15;
constexpr std::uint64_t kBindTcp = 1ULL << 0;
constexpr std::uint64_t kConnectTcp = 1ULL << 1;
constexpr std::uint64_t kAbstractSockets = 1ULL << 0;
constexpr std::uint64_t kSignals = 1ULL << 1;

/// `struct landlock_ruleset_attr` of version 6. A kernel is given as much of it as it knows.
struct RulesetAttributes {
  std::uint64_t files;
  std::uint64_t net;
  std::uint64_t scoped;
};

constexpr std::uint64_t kReadOne = LANDLOCK_ACCESS_FS_READ_FILE;
constexpr std::uint64_t kReadAll = kReadOne | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t kWriteOne = kReadOne | LANDLOCK_ACCESS_FS_WRITE_FILE | kTruncate;
constexpr std::uint64_t kExecuteOne = kReadOne | LANDLOCK_ACCESS_FS_EXECUTE;
constexpr std::uint64_t kChangeAll = kReadAll | kWriteOne | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                                     LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_DIR |
                                     LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REFER;
/// The rights that a rule for something other than a folder may have.
constexpr std::uint64_t kOfFiles = kWriteOne | kExecuteOne;
constexpr std::uint64_t kRuled = kChangeAll | kExecuteOne | LANDLOCK_ACCESS_FS_MAKE_SYM |
                                 LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_SOCK |
                                 LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
                                 kDeviceControl;

std::uint64_t rights_of(PathRules::Access access) {
  switch (access) {
    case PathRules::Access::kReadFile:
      return kReadOne;
    case PathRules::Access::kRead:
      return kReadAll;
    case PathRules::Access::kWriteFile:
      return kWriteOne;
    case PathRules::Access::kChange:
      return kChangeAll;
    case PathRules::Access::kExecute:
      return kExecuteOne;
  }
  return 0;
}

/// True when what is at the path is of the kind that the rule is for.
bool fits(PathRules::Access access, mode_t mode) {
  switch (access) {
    case PathRules::Access::kReadFile:
    case PathRules::Access::kExecute:
      return S_ISREG(mode);
    case PathRules::Access::kWriteFile:
      return !S_ISDIR(mode);
    case PathRules::Access::kRead:
    case PathRules::Access::kChange:
      return true;
  }
  return false;
}

}  // namespace

int PathRules::kernel_version() {
  return static_cast<int>(
      ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION));
}

PathRules::PathRules(int version) : known_(kRuled) {
  if (version < kWithTruncate) {
    known_ &= ~kTruncate;
  }
  if (version < kWithDevices) {
    known_ &= ~kDeviceControl;
  }
  const RulesetAttributes attributes{known_, kBindTcp | kConnectTcp, kAbstractSockets | kSignals};
  const std::size_t size = version >= kWithScopes ? sizeof attributes
                           : version >= kWithTcp  ? offsetof(RulesetAttributes, scoped)
                                                  : offsetof(RulesetAttributes, net);
  fd_.reset(static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, size, 0)));
  failure_ = !fd_ ? errno : version < kWithMoves ? EOPNOTSUPP : 0;
}

void PathRules::allow(const std::string& path, Access access) {
  const posix::UniqueFd entry(::open(path.c_str(), O_PATH | O_CLOEXEC));
  allow(entry.get(), access);
}

void PathRules::allow(int entry, Access access) {
  struct stat status {};
  if (failure_ != 0 || ::fstat(entry, &status) != 0 || !fits(access, status.st_mode)) {
    return;
  }
  landlock_path_beneath_attr rule{};
  rule.allowed_access =
      rights_of(access) & known_ & (S_ISDIR(status.st_mode) ? ~std::uint64_t{0} : kOfFiles);
  rule.parent_fd = entry;
  if (::syscall(SYS_landlock_add_rule, fd_.get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0) != 0 &&
      errno != EBADFD) {  // EBADFD: a pipe or the like, which has no path
    failure_ = errno;
  }
}

int PathRules::enforce() {
  if (failure_ == 0 && (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
                        ::syscall(SYS_landlock_restrict_self, fd_.get(), 0) != 0)) {
    failure_ = errno;
  }
  return failure_;
}

}  // namespace quoll::sandbox

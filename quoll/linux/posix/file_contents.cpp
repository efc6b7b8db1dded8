#include "quoll/linux/posix/file_contents.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/statfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace quoll::posix {

namespace {

constexpr std::size_t kChunk = std::size_t{1} << 18;
/// A call copies no more than this, so that a kill is not kept waiting, nor whoever looks on.
constexpr off_t kLargestCall = off_t{1} << 24;

int write_all_at(int to, const char* data, std::size_t size, off_t offset) {
  while (size > 0) {
    const ssize_t wrote = uninterrupted([&] { return ::pwrite(to, data, size, offset); });
    if (wrote <= 0) {
      return wrote < 0 ? errno : EIO;
    }
    data += wrote;
    offset += wrote;
    size -= static_cast<std::size_t>(wrote);
  }
  return 0;
}

/// Tells whoever looks on.
Outcome after_piece(const CopyStep& step, ssize_t bytes) {
  return !step || step(static_cast<std::uint64_t>(bytes)) ? Outcome()
                                                          : FileFailure{ECANCELED, false};
}

/// Copies the bytes from `position` to `end`, or to the end of the source.
Outcome copy_range(int from, int to, off_t position, off_t end, const CopyStep& step) {
  off_t out = position;
  while (position < end) {
    const auto size = static_cast<std::size_t>(std::min(end - position, kLargestCall));
    const ssize_t copied =
        uninterrupted([&] { return ::copy_file_range(from, &position, to, &out, size, 0); });
    if (copied <= 0) {
      break;  // the end, or a pair of files that cannot be copied this way: what is left is read
    }
    if (auto failure = after_piece(step, copied)) {
      return failure;
    }
  }
  if (position >= end) {
    return std::nullopt;
  }
  const auto buffer = std::make_unique_for_overwrite<char[]>(kChunk);
  while (position < end) {
    const std::size_t size =
        std::min(static_cast<std::size_t>(end - position), static_cast<std::size_t>(kChunk));
    const ssize_t got = uninterrupted([&] { return ::pread(from, buffer.get(), size, position); });
    if (got < 0) {
      return FileFailure{errno, false};
    }
    if (got == 0) {
      break;
    }
    if (const int number =
            write_all_at(to, buffer.get(), static_cast<std::size_t>(got), position)) {
      return FileFailure{number, true};
    }
    position += got;
    if (auto failure = after_piece(step, got)) {
      return failure;
    }
  }
  return std::nullopt;
}

/// Whether the size that the file claims says nothing: none, a page, or all memory that there could
/// be, as files of /proc and /sys do. Some of them never end.
bool is_unsized(int file, const struct stat& status) {
  struct statfs system {};
  return status.st_size == 0 ||
         (::fstatfs(file, &system) == 0 &&
          (system.f_type == PROC_SUPER_MAGIC || system.f_type == SYSFS_MAGIC));
}

/// Copies what claims no size, or not its own.
Outcome copy_unsized(int from, int to, const CopyStep& step) {
  constexpr off_t kMost = off_t{64} << 20;
  if (auto failure = copy_range(from, to, 0, kMost, step)) {
    return failure;
  }
  std::uint64_t more = 0;  // some are read by whole numbers only
  const ssize_t got = uninterrupted([&] { return ::pread(from, &more, sizeof more, kMost); });
  return got > 0 ? Outcome(FileFailure{EFBIG, false}) : std::nullopt;
}

/// `size` is what the source had at the beginning: it may grow faster than it is copied.
Outcome copy_around_holes(int from, int to, off_t size, const CopyStep& step) {
  off_t position = 0;
  while (true) {
    struct stat status {};
    if (::fstat(from, &status) != 0) {
      return FileFailure{errno, false};
    }
    const off_t end = std::min(size, status.st_size);
    const off_t data = ::lseek(from, position, SEEK_DATA);
    const off_t hole = data < 0 ? -1 : ::lseek(from, data, SEEK_HOLE);
    if (hole <= data || data >= end) {
      // Nothing but a hole up to the size that the file had before this was asked.
      if (::ftruncate(to, end) != 0) {
        return FileFailure{errno, true};
      }
      return std::nullopt;
    }
    if (auto failure = copy_range(from, to, data, std::min(hole, end), step)) {
      return failure;
    }
    position = hole;
  }
}

void keep_extended_attributes(int from, int to) {
  const ssize_t room = ::flistxattr(from, nullptr, 0);
  if (room <= 0) {
    return;
  }
  std::string names(static_cast<std::size_t>(room), '\0');
  const ssize_t size = ::flistxattr(from, names.data(), names.size());
  std::string value;
  for (std::size_t at = 0; size > 0 && at < static_cast<std::size_t>(size);) {
    // cppcheck-suppress stlcstrConstructor  ; up to the next null
    const std::string name(names.c_str() + at);
    at += name.size() + 1;
    if (!name.starts_with("user.")) {
      continue;
    }
    value.resize(XATTR_SIZE_MAX);
    const ssize_t got = ::fgetxattr(from, name.c_str(), value.data(), value.size());
    if (got >= 0) {
      ::fsetxattr(to, name.c_str(), value.data(), static_cast<std::size_t>(got), 0);
    }
  }
}

}  // namespace

Outcome copy_contents(int from, int to, const CopyStep& step) {
  if (::ioctl(to, FICLONE, from) == 0) {
    return std::nullopt;
  }
  struct stat status {};
  if (::fstat(from, &status) != 0) {
    return FileFailure{errno, false};
  }
  if (is_unsized(from, status)) {
    return copy_unsized(from, to, step);
  }
  if (status.st_blocks < status.st_size / 512) {
    return copy_around_holes(from, to, status.st_size, step);
  }
  return copy_range(from, to, 0, status.st_size, step);
}

void keep_attributes(int from, const struct stat& status, int to) {
  // In this order: attributes cannot be added to a file without write permission, and all of it
  // would change the times.
  keep_extended_attributes(from, to);
  ::fchmod(to, status.st_mode & 01777);
  const std::array times{status.st_atim, status.st_mtim};
  ::futimens(to, times.data());
}

int late_write_error(int fd) {
  const int copy = ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
  return copy >= 0 && ::close(copy) != 0 && errno != EINTR ? errno : 0;
}

}  // namespace quoll::posix

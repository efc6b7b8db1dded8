#include "apps/folder-helper/zip.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/file_kind.h"
#include "quoll/linux/posix/system_call.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::folder_helper {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 17U;
/// Any pipe holds as much, so that nobody has to read before the end.
constexpr std::size_t kMostTold = 4000;
constexpr std::size_t kLongestPath = 300;

struct FreeEntry {
  void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
using EntryHandle = std::unique_ptr<archive_entry, FreeEntry>;

}  // namespace

void Zip::Free::operator()(archive* held) const {
  archive_write_free(held);
}

Zip::Zip(int output) : archive_(archive_write_new()), block_(kBlock) {
  if (!archive_) {
    throw std::bad_alloc();
  }
  check(archive_write_set_format_zip(archive_.get()));
  check(archive_write_zip_set_compression_deflate(archive_.get()));
  check(archive_write_set_bytes_in_last_block(archive_.get(), 1));  // no padding
  check(archive_write_open_fd(archive_.get(), output));
}

void Zip::folder(const std::string& path, const struct stat& status) {
  add_header(path, status);
}

void Zip::file(const std::string& path, const struct stat& status, int parent, const char* name) {
  const posix::UniqueFd file =
      posix::open_file_at(parent, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  struct stat now {};
  if (!file || fstat(file.get(), &now) != 0) {
    left_out(path, posix::error_words(errno));
    return;
  }
  if (const auto kind = posix::other_kind(now.st_mode)) {
    left_out(path, *kind);
    return;
  }
  add_header(path, status);
  for (auto left = static_cast<std::size_t>(status.st_size); left > 0;) {
    const ssize_t size = posix::uninterrupted(
        [&] { return read(file.get(), block_.data(), std::min(left, block_.size())); });
    if (size < 0) {
      throw PackError("a file in it cannot be read: " + posix::error_words(errno));
    }
    if (size == 0) {
      break;
    }
    if (archive_write_data(archive_.get(), block_.data(), static_cast<std::size_t>(size)) < 0) {
      check(ARCHIVE_FATAL);
    }
    left -= static_cast<std::size_t>(size);
  }
  check(archive_write_finish_entry(archive_.get()));
}

void Zip::left_out(const std::string& path, std::string_view why) {
  const std::string line =
      std::string(why) + "\t" + foundation::printable(path, kLongestPath) + "\n";
  if (untold_ > 0 || told_.size() + line.size() > kMostTold) {
    ++untold_;
  } else {
    told_ += line;
  }
}

std::string Zip::end() {
  check(archive_write_close(archive_.get()));
  if (untold_ > 0) {
    told_ += "they cannot be packed\t" + std::to_string(untold_) + " more\n";
  }
  return told_;
}

void Zip::add_header(const std::string& path, const struct stat& status) {
  const EntryHandle entry(archive_entry_new());
  if (!entry) {
    throw std::bad_alloc();
  }
  archive_entry_set_pathname(entry.get(), path.c_str());
  archive_entry_set_mode(entry.get(), status.st_mode & (S_IFMT | 0777U));
  archive_entry_set_mtime(entry.get(), status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
  if (S_ISREG(status.st_mode)) {
    archive_entry_set_size(entry.get(), status.st_size);
  }
  check(archive_write_header(archive_.get(), entry.get()));
}

void Zip::check(int result) {
  if (result >= ARCHIVE_WARN) {
    return;
  }
  const int number = archive_errno(archive_.get());
  const char* const words = archive_error_string(archive_.get());
  throw PackError(number > 0 ? posix::error_words(number)
                             : foundation::printable(words != nullptr ? words : "no reason"));
}

}  // namespace quoll::folder_helper

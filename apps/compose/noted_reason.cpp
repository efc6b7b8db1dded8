#include "apps/compose/noted_reason.h"

#include <fcntl.h>
#include <unistd.h>

#include "apps/compose/moment.h"
#include "apps/compose/small_file.h"
#include "quoll/linux/posix/folder_cursor.h"

namespace quoll::compose {
namespace {

constexpr const char* kReasonFile = "reason";

}  // namespace

void note_reason(const std::string& folder, const std::string& reason) {
  const posix::UniqueFd fd = posix::open_folder(AT_FDCWD, folder);
  if (fd && write_small_file(fd.get(), kReasonFile, reason + "\n") != 0) {
    unlinkat(fd.get(), kReasonFile, 0);  // a reason of before is none of now
  }
}

std::string noted_reason(const std::string& folder) {
  const posix::UniqueFd fd = posix::open_folder(AT_FDCWD, folder);
  std::string note;
  return fd && read_small_file(fd.get(), kReasonFile, note) == 0 ? first_line(note) : "";
}

}  // namespace quoll::compose

#include "apps/compose/waiting_files.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <system_error>
#include <utility>

#include "apps/compose/noted_sizes.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {
namespace {

std::vector<std::string> names_in(int folder) {
  std::vector<std::string> names;
  if (const int error = posix::list_folder(folder, names); error != 0) {
    throw std::system_error(error, std::generic_category());
  }
  return names;
}

}  // namespace

std::vector<WaitingFile> waiting_files(int taken_folder) {
  const posix::UniqueFd above = posix::open_folder(taken_folder, "files");
  if (!above && errno == ENOENT) {
    return {};
  }
  const std::vector<std::uint64_t> sizes = noted_sizes(taken_folder).files;
  std::vector<WaitingFile> files;
  for (const std::string& number : names_in(above.get())) {
    WaitingFile file;
    const char* const end = number.data() + number.size();
    if (const auto read = std::from_chars(number.data(), end, file.number);
        read.ec != std::errc() || read.ptr != end) {
      continue;
    }
    if (file.number >= sizes.size()) {
      throw std::system_error(ENODATA, std::generic_category());
    }
    file.size = sizes[file.number];
    const posix::UniqueFd folder = posix::open_folder(above.get(), number);
    for (std::string& name : names_in(folder.get())) {
      file.name = std::move(name);
      files.push_back(file);
    }
  }
  std::ranges::sort(files, {}, &WaitingFile::number);
  return files;
}

std::string path_of(const WaitingFile& file) {
  return "files/" + std::to_string(file.number) + "/" + file.name;
}

}  // namespace quoll::compose

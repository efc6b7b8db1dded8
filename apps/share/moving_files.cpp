#include "apps/share/moving_files.h"

#include <fcntl.h>

#include "quoll/linux/posix/exclusive_rename.h"

namespace quoll::share {

using foundation::Error;

std::optional<Error> MovingFiles::copyItemAtPath(std::string_view source,
                                                 std::string_view destination) {
  const bool is_moved =
      is_prepared(source) && posix::rename_exclusively(AT_FDCWD, std::string(source), AT_FDCWD,
                                                       std::string(destination)) == 0;
  // Whatever was wrong, a copy meets it again and tells, unless it helps.
  return is_moved ? std::nullopt : ForwardingFiles::copyItemAtPath(source, destination);
}

std::optional<Error> MovingFiles::writeToFile(const foundation::Bytes& data, std::string_view path,
                                              platform::NSDataWritingOptions options) {
  const std::string_view source(reinterpret_cast<const char*>(data.data()), data.size());
  return is_prepared(source) ? copyItemAtPath(source, path)
                             : ForwardingFiles::writeToFile(data, path, options);
}

}  // namespace quoll::share

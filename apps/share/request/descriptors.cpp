#include "apps/share/request/descriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <set>
#include <string>
#include <string_view>

namespace quoll::share {

void hold_standard_descriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) < 0) {
      // The lowest free number is this one. Each is opened the wrong way round: using it fails.
      static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
}

void close_inherited_descriptors(const ShareRequest& request, int kept) {
  constexpr unsigned kMost = 1U << 30U;
  std::set<unsigned> named;
  if (kept >= 0) {
    fcntl(kept, F_SETFD, FD_CLOEXEC);
    named.insert(static_cast<unsigned>(kept));
  }
  for (const DescriptorItem& item : request.descriptor_items) {
    named.insert(static_cast<unsigned>(item.descriptor.get()));
  }
  for (const std::string& item : request.items) {
    for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
      unsigned number = 0;
      if (item.starts_with(folder) &&
          std::from_chars(item.data() + folder.size(), item.data() + item.size(), number).ec ==
              std::errc() &&
          number < kMost) {
        named.insert(number);
      }
    }
  }
  unsigned first = STDERR_FILENO + 1;
  for (const unsigned number : named) {
    if (number > first) {
      close_range(first, number - 1, 0);
    }
    if (number >= first) {
      first = number + 1;
    }
  }
  close_range(first, ~0U, 0);
}

}  // namespace quoll::share

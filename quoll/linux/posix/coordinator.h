#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "quoll/platform/coordinator.h"

namespace quoll::posix {

/// Coordinators that keep apart programs, and threads of one program, by locks on files. Whoever
/// works on a group container from outside takes the same locks:
///
/// - They are `flock` locks on files in `<group container>/.locks/`. The folder has mode 0700, the
///   files 0600. They are made when they are missing and never deleted. Each access opens its own.
/// - An access to an item first locks, shared, the files of the container and of every folder
///   between it and the item, from the container down, and then the item's own file exclusively.
///   It waits for each. All are freed when it ends, or when the process dies.
/// - A file's name is `lock_file_name` of the location inside the container, normalised by text.
///
/// So nobody else is inside a folder while somebody may delete it, and siblings do not wait for
/// each other. An item that is not strictly inside a container, or that is inside `.locks`, is an
/// error. A thread that coordinates inside an accessor waits for itself when the two items exclude
/// each other.
[[nodiscard]] std::function<std::unique_ptr<platform::NSFileCoordinator>()> coordinator_factory();

/// The lock file's name for a location relative to the container, beginning with "/": every byte
/// but A-Z a-z 0-9 - . _ ~ as `%XX` in capitals, then ".lock". The container is "/", so `%2F.lock`;
/// "/SharedData/Share" gives `%2FSharedData%2FShare.lock`. When that is longer than 255 bytes it is
/// replaced by "h", the 16 hexadecimal digits (small letters) of its FNV-1a hash of 64 bits, and
/// ".lock"; what is hashed ends with ".lock" too.
[[nodiscard]] std::string lock_file_name(std::string_view inside);

}  // namespace quoll::posix

#pragma once

#include <optional>
#include <string>

namespace quoll::share {

/// What keeps shares from putting files into the shared folder.
struct ContainerTrouble {
  std::string found;   ///< a whole sentence
  std::string advice;  ///< the one thing to do
};

/// Tries what a share does with the group container, and makes what the first share makes; none
/// when all goes well. A confined process may ask about the container that it may write in. The
/// desktop with the share's bundle must be installed.
[[nodiscard]] std::optional<ContainerTrouble> container_trouble();

/// The command that lets this user write what exists of a path; empty when it is not known.
[[nodiscard]] std::string permission_advice(const std::string& path);

/// The part of a path that exists.
[[nodiscard]] std::string existing_part(const std::string& path);

}  // namespace quoll::share

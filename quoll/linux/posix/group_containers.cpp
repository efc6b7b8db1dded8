#include "quoll/linux/posix/group_containers.h"

#include <algorithm>
#include <cstdlib>

#include "quoll/foundation/path.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/paths.h"

namespace quoll::posix {

namespace {

std::optional<std::string> absolute(const char* path) {
  if (path == nullptr || *path != '/') {
    return std::nullopt;
  }
  return normalised_path(path);
}

std::optional<std::string> folder_of_environment() {
  if (const char* chosen = std::getenv("QUOLL_GROUP_CONTAINERS")) {
    return absolute(chosen);
  }
  auto data = absolute(std::getenv("XDG_DATA_HOME"));
  if (!data) {
    const auto home = absolute(std::getenv("HOME"));
    if (!home) {
      return std::nullopt;
    }
    data = foundation::appending_path_component(*home, ".local/share");
  }
  return foundation::appending_path_component(*data, "group-containers");
}

}  // namespace

std::optional<std::string> group_containers_folder() {
  auto folder = folder_of_environment();
  // A command URL names staged files, and who reads it gets texts: no other path would arrive.
  return folder && foundation::is_utf8(*folder) ? folder : std::nullopt;
}

std::optional<ContainerLocation> locate_in_container(std::string_view path) {
  const auto root = group_containers_folder();
  if (!root || !path.starts_with('/')) {
    return std::nullopt;
  }
  const std::string normalised = normalised_path(path);
  const std::string start = *root == "/" ? *root : *root + "/";
  if (!normalised.starts_with(start) || normalised.size() == start.size()) {
    return std::nullopt;
  }
  const std::size_t end = std::min(normalised.find('/', start.size()), normalised.size());
  return ContainerLocation{normalised.substr(0, end), normalised.substr(end)};
}

}  // namespace quoll::posix

#include "quoll/linux/posix/group_containers.h"

#include <algorithm>
#include <cstdlib>

#include "quoll/foundation/path.h"
#include "quoll/linux/posix/paths.h"

namespace quoll::posix {

namespace {

std::optional<std::string> absolute(const char* path) {
  if (path == nullptr || *path != '/') {
    return std::nullopt;
  }
  return normalised_path(path);
}

}  // namespace

std::optional<std::string> group_containers_folder() {
  return group_containers_folder([](const char* name) { return std::getenv(name); });
}

std::optional<std::string> group_containers_folder(
    const std::function<const char*(const char* name)>& variable) {
  if (const char* chosen = variable("QUOLL_GROUP_CONTAINERS")) {
    return absolute(chosen);
  }
  auto data = absolute(variable("XDG_DATA_HOME"));
  if (!data) {
    const auto home = absolute(variable("HOME"));
    if (!home) {
      return std::nullopt;
    }
    data = foundation::appending_path_component(*home, ".local/share");
  }
  return foundation::appending_path_component(*data, "group-containers");
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

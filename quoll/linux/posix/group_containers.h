#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// Where group containers lie: one folder a group, named after the group.
namespace quoll::posix {

/// The folder that holds them, an absolute normalised path: `$QUOLL_GROUP_CONTAINERS` when that is
/// set (then only there), else `${XDG_DATA_HOME:-~/.local/share}/group-containers`. None when what
/// is set is not an absolute path, and none without a home. It is not made by this call.
[[nodiscard]] std::optional<std::string> group_containers_folder();

/// The same for a program with another environment: `variable` answers the value of a variable, or
/// null.
[[nodiscard]] std::optional<std::string> group_containers_folder(
    const std::function<const char*(const char* name)>& variable);

/// A location by its container: `/data/group-containers/g/Shared/x` is
/// `/data/group-containers/g` and `/Shared/x`. `inside` is empty for the container itself.
struct ContainerLocation {
  std::string container;
  std::string inside;
};

/// Where an absolute path lies by its text (links are not looked at); none outside every container.
[[nodiscard]] std::optional<ContainerLocation> locate_in_container(std::string_view path);

}  // namespace quoll::posix

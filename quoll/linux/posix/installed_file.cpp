#include "quoll/linux/posix/installed_file.h"

#include <filesystem>

namespace quoll::posix {

namespace {

/// As seen from the programs that people call.
const char* from_programs(InstalledFolder folder) {
  switch (folder) {
    case InstalledFolder::kPrograms:
      return "";
    case InstalledFolder::kHelpers:
      return QUOLL_HELPERS_FROM_PROGRAMS;
    case InstalledFolder::kModules:
      return QUOLL_MODULES_FROM_PROGRAMS;
    case InstalledFolder::kData:
      return QUOLL_DATA_FROM_PROGRAMS;
    case InstalledFolder::kCatalogues:
      return QUOLL_CATALOGUES_FROM_PROGRAMS;
  }
  return "";
}

}  // namespace

std::string installed_file(InstalledFolder folder, std::string_view name) {
  namespace fs = std::filesystem;
  std::error_code unknown;
  fs::path programs = fs::read_symlink("/proc/self/exe", unknown).parent_path();
  if (unknown) {
    return {};
  }
  if (programs.string().ends_with(QUOLL_HELPERS)) {
    programs /= QUOLL_PROGRAMS_FROM_HELPERS;
  }
  return (programs / from_programs(folder) / name).lexically_normal();
}

}  // namespace quoll::posix

#pragma once

#include <string>
#include <string_view>

namespace quoll::posix {

/// A folder of what is installed together.
enum class InstalledFolder {
  kPrograms,  ///< programs that people call
  kHelpers,   ///< programs that other programs call
  kModules,   ///< what programs load
  kData,
  kCatalogues,  ///< message catalogues, a folder each language
};

/// The path of a file that is installed together with the running program, wherever that is; empty
/// when the program's own place is not known. Nobody looks whether it is there. To be called before
/// the process confines itself.
[[nodiscard]] std::string installed_file(InstalledFolder folder, std::string_view name);

}  // namespace quoll::posix

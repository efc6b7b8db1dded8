#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quoll::compose {

/// A file of a taken draft, `files/K/NAME`.
struct WaitingFile {
  std::uint64_t number = 0;  ///< its K
  std::string name;
  std::uint64_t size = 0;  ///< what it had when it was taken, in bytes
};

/// The files of the draft in an open folder of taken drafts, in order. Throws `std::system_error`,
/// also when the size of one of them is not noted.
[[nodiscard]] std::vector<WaitingFile> waiting_files(int taken_folder);

/// Where the file is, relative to the folder.
[[nodiscard]] std::string path_of(const WaitingFile& file);

}  // namespace quoll::compose

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quoll::compose {

/// A file of a taken draft.
struct TakenFile {
  std::string name;  ///< the name that people know it by
  std::string path;
};

/// The files of a draft in the order of the command. The draft's open folder has them as
/// `files/K/NAME`, K from 0, so that two may have one name; that is also their `path`.
[[nodiscard]] std::vector<TakenFile> taken_files(int folder);

/// How many bytes the message file of the draft in this folder will have, at the most.
[[nodiscard]] std::uint64_t message_size(int folder);

}  // namespace quoll::compose

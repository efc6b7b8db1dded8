#include "quoll/container/unique_name.h"

#include "quoll/foundation/format.h"
#include "quoll/foundation/path.h"
#include "quoll/platform/files.h"

namespace quoll {

namespace {

/// The candidates of one file name, by counter: 0 is the name itself.
class Candidates {
 public:
  explicit Candidates(std::string_view file_name)
      : base_(foundation::deleting_path_extension(file_name)),
        extension_(foundation::path_extension(file_name)) {}

  [[nodiscard]] std::string name(std::size_t counter) const {
    const std::string base = counter == 0 ? base_ : foundation::format("%@_%lu", base_, counter);
    return foundation::appending_path_extension(base, extension_);
  }

 private:
  std::string base_;
  std::string extension_;
};

bool exists(std::string_view path) {
  return platform::NSFileManager::defaultManager()->fileExistsAtPath(path);
}

}  // namespace

namespace Vorlent_Fs {

std::string GetGoodPath(std::string_view file_name, std::string_view folder) {
  const Candidates candidates(file_name);
  for (std::size_t counter = 0;; ++counter) {
    std::string path = foundation::appending_path_component(folder, candidates.name(counter));
    if (!exists(path)) {
      return path;
    }
  }
}

}  // namespace Vorlent_Fs

namespace container {

bool UniqueNames::is_listed(const std::string& name) {
  if (!listed_) {
    auto names = platform::NSFileManager::defaultManager()->contentsOfDirectoryAtPath(folder_);
    listed_.emplace();
    if (names) {
      listed_->insert(names->begin(), names->end());
    }
  }
  return listed_->contains(name);
}

std::string UniqueNames::good_path(std::string_view file_name) {
  const Candidates candidates(file_name);
  const auto [position, is_new] = next_.try_emplace(std::string(file_name), 0);
  std::size_t& counter = position->second;
  while (true) {
    const std::string name = candidates.name(counter);
    std::string path = foundation::appending_path_component(folder_, name);
    // The list only spares the look at names that are surely taken; the disk has the last word.
    if ((counter == 0 || !is_listed(name)) && !exists(path)) {
      return path;
    }
    ++counter;
  }
}

}  // namespace container
}  // namespace quoll

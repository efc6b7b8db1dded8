#pragma once

#include <fcntl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "quoll/linux/posix/unique_fd.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {

/// A draft as it waits to be written, and the file that it is written to.
class TakenFolder {
 public:
  explicit TakenFolder(const std::string& command = "quoll://compose?subject=S") {
    std::filesystem::create_directories(folder_.path("taken"));
    folder_.write("taken/command", command);
    folder_.write("output", "");
    open_both();
  }

  void add(unsigned number, const std::string& name, const std::string& content) {
    const std::string folder = "taken/files/" + std::to_string(number);
    std::filesystem::create_directories(folder_.path(folder));
    folder_.write(folder + "/" + name, content);
    note_size(number, content.size());
  }

  /// What the file with this number had when it was taken.
  void note_size(unsigned number, std::uint64_t size) {
    sizes_.resize(std::max<std::size_t>(sizes_.size(), number + 1));
    sizes_[number] = size;
    std::string lines = "0\n";
    for (const std::uint64_t one : sizes_) {
      lines += std::to_string(one) + "\n";
    }
    folder_.write("taken/sizes", lines);
  }

  /// Empties the output, and begins anew.
  void open_both() {
    taken_.reset(open(folder_.path("taken").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    output_.reset(open(folder_.path("output").c_str(), O_RDWR | O_TRUNC | O_CLOEXEC));
  }

  [[nodiscard]] int taken() const { return taken_.get(); }
  [[nodiscard]] int output() const { return output_.get(); }
  [[nodiscard]] std::string written() const { return read_file(folder_.path("output")); }
  [[nodiscard]] const TemporaryFolder& around() const { return folder_; }

 private:
  TemporaryFolder folder_;
  std::vector<std::uint64_t> sizes_;
  posix::UniqueFd taken_;
  posix::UniqueFd output_;
};

}  // namespace quoll::test

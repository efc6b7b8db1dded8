#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quoll::test {

/// A new folder on a real disk, removed with all that is in it when the test ends.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "quoll-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("no temporary folder");
    }
    path_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::string path(std::string_view name) const {
    return path_ + "/" + std::string(name);
  }

  /// Writes a file inside the folder and answers its path.
  std::string write(std::string_view name, std::string_view content) const {
    std::ofstream out(path(name), std::ios::binary);
    out << content;
    return path(name);
  }

 private:
  std::string path_;
};

/// All bytes of a file; throws when it cannot be read.
inline std::string read_file(const std::string& path) {
  const std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw std::runtime_error("cannot read " + path);
  }
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

}  // namespace quoll::test

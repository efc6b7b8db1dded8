#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/folder-helper/walk.h"

struct archive;

namespace quoll::folder_helper {

/// Writes what it visits as a ZIP file, as it comes. Names are UTF-8; times and modes are kept, the
/// owners are not. The environment's character set has to be UTF-8.
class Zip final : public Visitor {
 public:
  /// `output` is a regular file, open for writing.
  explicit Zip(int output);

  void folder(const std::string& path, const struct stat& status) override;
  /// A file that has grown since is packed up to the size that it had.
  void file(const std::string& path, const struct stat& status, int parent,
            const char* name) override;
  void left_out(const std::string& path, std::string_view why) override;

  /// To be called when all was visited. What was left out, a line each: the reason, a TAB and the
  /// printable path. It is cut short: a last line then holds their number in the place of a path.
  [[nodiscard]] std::string end();

 private:
  struct Free {
    void operator()(archive* held) const;
  };

  void add_header(const std::string& path, const struct stat& status);
  void check(int result);

  std::unique_ptr<archive, Free> archive_;
  std::vector<char> block_;
  std::string told_;
  std::size_t untold_ = 0;
};

}  // namespace quoll::folder_helper

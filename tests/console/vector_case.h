#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "apps/console/operations/json.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {

/// One line of a vector file, as docs/vectors.md describes it.
struct VectorCase {
  std::string reason;
  console::Json request;
  console::Json reply;
  std::vector<console::Json> before;
  std::map<std::string, std::string> files;
  std::map<std::string, std::string> environment;

  /// True when the case has the folders for itself; otherwise it may share a run with others.
  bool alone = false;
};

/// Throws when the file is not what it should be.
[[nodiscard]] std::vector<VectorCase> read_vectors(const std::string& path);

/// The folders of one run.
class VectorFolders {
 public:
  [[nodiscard]] std::string containers() const { return folder_.path("containers"); }
  [[nodiscard]] std::string path(std::string_view name) const { return folder_.path(name); }

  /// The text with the placeholders filled.
  [[nodiscard]] std::string fill(std::string text) const;
  /// Makes the files of a case.
  void make_files(const VectorCase& vector) const;
  /// Removes everything, so that the same paths serve again.
  void clear() const;

 private:
  TemporaryFolder folder_;
};

/// The requests of a case, `before` first, as lines with their placeholders filled.
[[nodiscard]] std::vector<std::string> request_lines(const VectorCase& vector,
                                                     const VectorFolders& folders);

/// True when a reply is what was expected: equal, but for the order of keys and for "${ANY}".
[[nodiscard]] bool matches(const console::Json& expected, const console::Json& reply);

}  // namespace quoll::test

#pragma once

#include <string>
#include <vector>

namespace quoll::compose {

/// A file that belongs to the receiver, with the name that it has for people.
struct TakenFile {
  std::string name;
  std::string path;
};

/// An attachment that is not in the draft.
struct LeftOut {
  std::string name;  ///< as it was asked for
  std::string reason;
};

/// Files taken out of the staging folder into a folder of their own, which is removed with this
/// object. The staged ones may go from then on.
///
/// Command URLs come from strangers too, so only what lies in the staging folder is taken: regular
/// files that are reached from it without a link and without leaving it. All else is left out.
class TakenFiles {
 public:
  /// Takes the files with these paths. Throws `CannotCompose` when there is no room for them.
  explicit TakenFiles(const std::vector<std::string>& paths);
  TakenFiles(const TakenFiles&) = delete;
  TakenFiles& operator=(const TakenFiles&) = delete;
  ~TakenFiles();

  [[nodiscard]] const std::vector<TakenFile>& files() const { return files_; }
  [[nodiscard]] const std::vector<LeftOut>& left_out() const { return left_out_; }

 private:
  void take(int staging, const std::string& staging_path, const std::string& path);
  void keep(int file, const std::string& name);
  void remove();

  std::string folder_;  ///< empty until the first file is taken
  std::vector<TakenFile> files_;
  std::vector<LeftOut> left_out_;
};

}  // namespace quoll::compose

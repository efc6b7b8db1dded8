#pragma once

#include <string>
#include <vector>

namespace quoll::compose {

/// A file that belongs to the receiver, and the name that people know it by.
struct TakenFile {
  std::string name;
  std::string path;
};

/// An attachment that is not in the draft.
struct LeftOut {
  std::string name;  ///< as the command has it
  std::string reason;
};

/// Files that were taken from the staging folder into a folder of their own, which the destructor
/// removes. The staged files are not needed any more then.
///
/// A command URL may come from a stranger. So only regular files in the staging folder are taken,
/// which are reached without following a link and without leaving the folder. Everything else is
/// left out.
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

  std::string folder_;  ///< empty until a file was taken
  std::vector<TakenFile> files_;
  std::vector<LeftOut> left_out_;
};

}  // namespace quoll::compose

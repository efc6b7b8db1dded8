#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace quoll::Vorlent_Fs {

/// `GetGoodPath:folder:`: the first path in `folder` that does not exist yet among `photo.jpg`,
/// `photo_1.jpg`, `photo_2.jpg`, ... It is free only as long as nobody else writes there.
[[nodiscard]] std::string GetGoodPath(std::string_view file_name, std::string_view folder);

}  // namespace quoll::Vorlent_Fs

namespace quoll::container {

/// Answers what `GetGoodPath` answers, again and again for one folder, without its cost: a thousand
/// files of one name would look at half a million paths. It remembers what it found, so it is good
/// only while the caller keeps every other writer out, and the caller writes what it is given
/// before it asks again.
class UniqueNames {
 public:
  explicit UniqueNames(std::string folder) : folder_(std::move(folder)) {}

  [[nodiscard]] std::string good_path(std::string_view file_name);

 private:
  [[nodiscard, gnu::visibility("hidden")]] bool is_listed(const std::string& name);

  std::string folder_;
  /// The names in the folder; read when the first name is found to be taken.
  std::optional<std::set<std::string>> listed_;
  /// The first counter of a file name that was not tried yet.
  std::map<std::string, std::size_t, std::less<>> next_;
};

}  // namespace quoll::container

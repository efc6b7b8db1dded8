#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/error.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/value.h"

namespace quoll::platform {

/// `NSDataWritingAtomic`: through a temporary file of the same folder and a rename.
inline constexpr unsigned NSDataWritingAtomic = 1;

/// The file system. Paths are bytes. An operation that fails answers false (or nothing) and sets
/// its error; on success the error is left as it was. Any thread may call; a null URL fails with
/// `NSFileNoSuchFileError`.
class NSFileManager {
 public:
  NSFileManager() = default;
  NSFileManager(const NSFileManager&) = delete;
  NSFileManager& operator=(const NSFileManager&) = delete;
  virtual ~NSFileManager() = default;

  /// Never null.
  [[nodiscard]] static std::shared_ptr<NSFileManager> defaultManager();

  /// `containerURLForSecurityApplicationGroupIdentifier:`: the group's container as a file URL,
  /// made when it is not there yet; null when it cannot be had.
  [[nodiscard]] virtual std::shared_ptr<foundation::NSURL>
  containerURLForSecurityApplicationGroupIdentifier(std::string_view group) = 0;

  /// `removeItemAtURL:error:`: a file, or a folder with all that is in it; links are removed, never
  /// followed.
  virtual bool removeItemAtURL(const std::shared_ptr<foundation::NSURL>& url,
                               std::optional<foundation::Error>& error) = 0;

  /// `createDirectoryAtURL:withIntermediateDirectories:attributes:error:` with intermediate folders
  /// and default attributes. A folder that exists is a success.
  virtual bool createDirectoryAtURL(const std::shared_ptr<foundation::NSURL>& url,
                                    std::optional<foundation::Error>& error) = 0;

  /// `copyItemAtPath:toPath:error:`: a file, or a folder whole; modes, times and extended
  /// attributes are kept, a link inside a folder stays a link. An existing destination is an error.
  /// The destination's name appears only when the copy is whole.
  virtual bool copyItemAtPath(std::string_view source, std::string_view destination,
                              std::optional<foundation::Error>& error) = 0;

  /// `fileExistsAtPath:isDirectory:`: follows links. `is_directory` may be null.
  [[nodiscard]] virtual bool fileExistsAtPath(std::string_view path,
                                              bool* is_directory = nullptr) = 0;

  /// `contentsOfDirectoryAtPath:error:`: the names in a folder, in no order, without "." and "..";
  /// none when it cannot be read.
  [[nodiscard]] virtual std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(
      std::string_view path) = 0;

  /// `contentsAtPath:`: a regular file's bytes.
  [[nodiscard]] virtual std::optional<foundation::Bytes> contentsAtPath(
      std::string_view path, std::optional<foundation::Error>& error) = 0;

  /// `writeToFile:options:error:` of a byte buffer. With `NSDataWritingAtomic` the file is replaced
  /// in one step; half a file is never seen under the name.
  virtual bool writeToFile(const foundation::Bytes& data, std::string_view path, unsigned options,
                           std::optional<foundation::Error>& error) = 0;

  /// The working directory; empty when it is not known.
  [[nodiscard]] virtual std::string currentDirectoryPath() = 0;
};

/// `fileURLWithPath:`: a relative path is made absolute against the working directory, `~` is not
/// expanded, an existing folder gets a "/" at the end. Null for the empty path.
[[nodiscard]] std::shared_ptr<foundation::NSURL> fileURLWithPath(std::string_view path);

}  // namespace quoll::platform

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "quoll/foundation/error.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/polymorphic.h"
#include "quoll/foundation/value.h"

namespace quoll::platform {

/// `NSDataWritingOptions`; none is written `{}`.
enum NSDataWritingOptions : unsigned {
  NSDataWritingAtomic = 1,  ///< through a temporary file of the same file system and a rename
};

/// The bytes of a file, or why they cannot be had.
using FileContents = std::variant<foundation::Bytes, foundation::Error>;

/// The file system. Paths are bytes; a relative one starts at the working directory. An operation
/// that changes something answers why it failed, and nothing when it succeeded; nothing is logged.
/// A null URL, or one that is no file URL, fails with `NSFileNoSuchFileError`. Any thread may call.
class NSFileManager : public foundation::Polymorphic {
 public:
  /// Never null.
  [[nodiscard]] static std::shared_ptr<NSFileManager> defaultManager();

  /// `containerURLForSecurityApplicationGroupIdentifier:`: the group's container as a file URL,
  /// made when it is not there yet; null when it cannot be had.
  [[nodiscard]] virtual std::shared_ptr<foundation::NSURL>
  containerURLForSecurityApplicationGroupIdentifier(std::string_view group) = 0;

  /// `removeItemAtURL:error:`: a file, or a folder with all that is in it; links are removed, never
  /// followed.
  [[nodiscard]] virtual std::optional<foundation::Error> removeItemAtURL(
      const std::shared_ptr<foundation::NSURL>& url) = 0;

  /// `createDirectoryAtURL:withIntermediateDirectories:attributes:error:` with intermediate folders
  /// and default attributes. A folder that exists is a success.
  [[nodiscard]] virtual std::optional<foundation::Error> createDirectoryAtURL(
      const std::shared_ptr<foundation::NSURL>& url) = 0;

  /// `copyItemAtPath:toPath:error:`: a file, or a folder whole; modes, times and extended
  /// attributes are kept, a link inside a folder stays a link. An existing destination is an error.
  /// The destination's name appears only when the copy is whole.
  [[nodiscard]] virtual std::optional<foundation::Error> copyItemAtPath(
      std::string_view source, std::string_view destination) = 0;

  /// `fileExistsAtPath:isDirectory:` without a directory flag: whether anything is there. Links are
  /// followed.
  [[nodiscard]] virtual bool fileExistsAtPath(std::string_view path) = 0;

  /// The directory flag of `fileExistsAtPath:isDirectory:`: whether a folder is there. Links are
  /// followed.
  [[nodiscard]] virtual bool isDirectoryAtPath(std::string_view path) = 0;

  /// `contentsOfDirectoryAtPath:error:`: the names in a folder, in no order, without "." and ".."
  /// and without links that lead nowhere, which do not exist here either; none when the folder
  /// cannot be read.
  [[nodiscard]] virtual std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(
      std::string_view path) = 0;

  /// `contentsAtPath:`: a regular file's bytes.
  [[nodiscard]] virtual FileContents contentsAtPath(std::string_view path) = 0;

  /// `writeToFile:options:error:` of a byte buffer. With `NSDataWritingAtomic` the file is replaced
  /// in one step; half a file is never seen under the name.
  [[nodiscard]] virtual std::optional<foundation::Error> writeToFile(
      const foundation::Bytes& data, std::string_view path, NSDataWritingOptions options) = 0;

  /// The working directory; empty when it is not known.
  [[nodiscard]] virtual std::string currentDirectoryPath() = 0;
};

/// `fileURLWithPath:`: a relative path is made absolute against the working directory, `~` is not
/// expanded, an existing folder gets a "/" at the end. Null for the empty path.
[[nodiscard]] std::shared_ptr<foundation::NSURL> fileURLWithPath(std::string_view path);

}  // namespace quoll::platform

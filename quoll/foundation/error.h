#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quoll::foundation {

inline constexpr std::string_view NSCocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr std::string_view NSPOSIXErrorDomain = "NSPOSIXErrorDomain";
/// The domain of this system's own failures.
inline constexpr std::string_view kQuollErrorDomain = "QuollErrorDomain";

inline constexpr std::string_view NSUnderlyingErrorKey = "NSUnderlyingError";

/// Codes of `NSCocoaErrorDomain` that this system makes or looks at.
enum CocoaErrorCode : int {
  NSFileNoSuchFileError = 4,
  NSFileReadUnknownError = 256,
  NSFileReadNoPermissionError = 257,
  NSFileReadNoSuchFileError = 260,
  NSFileReadTooLargeError = 263,
  NSFileWriteUnknownError = 512,
  NSFileWriteNoPermissionError = 513,
  NSFileWriteFileExistsError = 516,
  NSFileWriteOutOfSpaceError = 640,
  NSFileWriteVolumeReadOnlyError = 642,
  NSUserCancelledError = 3072,
};

/// Codes of `kQuollErrorDomain`.
enum QuollErrorCode : int {
  kRaisedError = 1,      ///< an exception ended the operation
  kNotCoordinatedError,  ///< access to shared files was not granted; beneath it stands why
  kNotPreparedError,     ///< a staging folder was not emptied or not made; beneath it stands why
  kNotAnImageError,      ///< what was shared as an image is none
  kNotOpenedError,       ///< no application took the URLs
  kShareEndedError,      ///< an exception ended the work on the share
};

/// A failure: where the code belongs, the code, a sentence for people, and details. A plain value;
/// copies are independent.
struct Error {
  /// A text as it is printed, or an error that lies beneath.
  using Detail = std::variant<std::string, std::shared_ptr<const Error>>;

  std::string domain;
  int code = 0;
  /// One sentence without line breaks; may be empty.
  std::string text;
  /// Details in the order in which they are printed. No error in it is null.
  std::vector<std::pair<std::string, Detail>> user_info;

  /// What `%@` prints:
  /// `Error Domain=NSCocoaErrorDomain Code=4 "..." UserInfo={NSFilePath=..., ...}`.
  [[nodiscard]] std::string description() const;

  /// The text under a key such as "NSFilePath", or null when there is none. The pointer lives as
  /// long as this error is unchanged.
  [[nodiscard]] const std::string* detail(std::string_view key) const&;
  const std::string* detail(std::string_view key) const&& = delete;

  /// The error under `NSUnderlyingErrorKey`, or null when there is none. The pointer lives as long
  /// as this error is unchanged.
  [[nodiscard]] const Error* underlying() const&;
  const Error* underlying() const&& = delete;
};

/// An error of `kQuollErrorDomain`.
[[nodiscard]] Error quoll_error(QuollErrorCode code, std::string_view sentence);
/// The same without a sentence, with the error that stands beneath it.
[[nodiscard]] Error quoll_error(QuollErrorCode code, Error beneath);

/// An error of `NSPOSIXErrorDomain` for an `errno` value.
[[nodiscard]] Error posix_error(int number);

/// What a failed file operation reports: the code of `NSCocoaErrorDomain` that fits `number` (an
/// `errno` value), the path, and the system's own error beneath it. `writing` tells a copy, a
/// removal or a creation from a read.
[[nodiscard]] Error file_error(int number, std::string_view path, bool writing);

}  // namespace quoll::foundation

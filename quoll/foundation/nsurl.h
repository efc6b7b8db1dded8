#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/object.h"
#include "quoll/foundation/url_parts.h"

namespace quoll::foundation {

/// `NSURL`: a URL, by its text, or by a text and the base that it is relative to. It never changes,
/// so any thread may use it.
///
/// The components are those of the absolute text. An absent component is none, which is not the
/// same as an empty one: `http://h` has no query, `http://h?` has the empty query.
class NSURL final : public Object {
 public:
  /// `URLWithString:`. Null when the text holds a character that no URL holds, a bad `%`, or a
  /// second `#`, or when it is empty. Nothing else is looked at: `(null)` is accepted.
  [[nodiscard]] static std::shared_ptr<NSURL> URLWithString(std::string_view text);
  /// The same of a text that is given away, without a copy.
  [[nodiscard]] static std::shared_ptr<NSURL> URLTakingString(std::string text);

  /// `URLWithString:relativeToURL:`. Keeps the text, which may be empty here, and the base; null as
  /// above. A null base is none.
  [[nodiscard]] static std::shared_ptr<NSURL> URLWithString(std::string_view text,
                                                            std::shared_ptr<NSURL> relativeToURL);

  /// The file URL of an absolute path, which is percent-encoded; any bytes will do. `is_folder`
  /// puts one "/" at the end. Null for the empty path. (`fileURLWithPath:` of the platform looks at
  /// the disk first.)
  [[nodiscard]] static std::shared_ptr<NSURL> file_url(std::string_view absolute_path,
                                                       bool is_folder);

  /// The text, resolved where there is a base (RFC 3986, 5.2).
  [[nodiscard]] std::string absoluteString() const { return absolute_text(); }
  /// The text as given.
  [[nodiscard]] std::string relativeString() const { return text_; }
  [[nodiscard]] std::shared_ptr<NSURL> baseURL() const { return base_; }
  /// As written, without the ":".
  [[nodiscard]] std::optional<std::string> scheme() const;
  /// Decoded; the address of an IPv6 host comes without its brackets.
  [[nodiscard]] std::optional<std::string> host() const;
  /// A number, saturated; none when what stands there is anything but digits.
  [[nodiscard]] std::optional<std::int64_t> port() const;
  /// Decoded.
  [[nodiscard]] std::optional<std::string> user() const;
  [[nodiscard]] std::optional<std::string> password() const;
  /// Decoded, without trailing slashes ("/" stays) and without the parameter string.
  [[nodiscard]] std::optional<std::string> path() const;
  /// What follows the first ";" of the last path segment.
  [[nodiscard]] std::optional<std::string> parameterString() const;
  [[nodiscard]] std::optional<std::string> query() const;
  [[nodiscard]] std::optional<std::string> fragment() const;
  /// True when the scheme is "file", in any case.
  [[nodiscard]] bool isFileURL() const;

  [[nodiscard]] std::string_view class_name() const override { return "NSURL"; }
  [[nodiscard]] std::string description() const override { return absoluteString(); }
  /// True for a URL with an equal text and an equal base.
  [[nodiscard]] bool isEqual(const Object* other) const override;

 private:
  friend std::optional<std::string> file_system_path(const std::shared_ptr<NSURL>& url);

  [[gnu::visibility("hidden")]] NSURL(std::string text, std::shared_ptr<NSURL> base);
  [[nodiscard]] const std::string& absolute_text() const { return base_ ? resolved_ : text_; }

  std::string text_;
  std::shared_ptr<NSURL> base_;
  std::string resolved_;  // empty without a base
  UrlParts parts_;        // pieces of the absolute text
};

/// `URLByAppendingPathComponent:`: the URL with one path component, percent-encoded, joined to its
/// path by one "/". A null URL gives null.
[[nodiscard]] std::shared_ptr<NSURL> URLByAppendingPathComponent(const std::shared_ptr<NSURL>& url,
                                                                 std::string_view component);

/// The path of a file URL as the file system wants it: like `path`, but any bytes, since file names
/// need not be UTF-8. None for null, for any other URL, and for a URL without a path.
[[nodiscard]] std::optional<std::string> file_system_path(const std::shared_ptr<NSURL>& url);

}  // namespace quoll::foundation

#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The rules by which links are found in a text. What needs other libraries is asked by
/// `Questions`.
///
/// - "http://", "https://" or "ftp://", in upper or lower case, and a host are a link as they are
///   written. The host is any name, or an IP address in "[...]". A user may stand before it, and a
///   port behind it.
/// - A name with a known top-level domain is a link to "http://". With a local part and "@" before
///   it, it is a link to "mailto:". The name must stand alone: not inside a path, an address or an
///   escape.
/// - A name of two labels that looks like a file's ("notes.py") is not a link, unless it begins
///   with "www." or a path follows.
/// - A link ends before white space, "<", ">", a quote, or a closing bracket that was not opened in
///   it. Any of . , ! ? ; : at its end is left out.
/// - Characters that a URL must not hold are percent-encoded. A host outside ASCII is written in
///   its ASCII form.
namespace quoll::links {

struct Questions {
  /// Whether a top-level domain is known. It is given in ASCII form and in lower case.
  std::function<bool(std::string_view label)> is_top_level_domain;
  /// The ASCII form of a host outside ASCII; none when it has none.
  std::function<std::optional<std::string>(std::string_view host)> ascii_form;
};

struct Found {
  std::size_t location = 0;  ///< in bytes
  std::size_t length = 0;    ///< in bytes
  std::string url;
};

/// The links in `text`, in the order in which they occur, without overlaps. The text may hold any
/// bytes. The time grows with its length, and each question is asked at most once for a name.
[[nodiscard]] std::vector<Found> scan(std::string_view text, const Questions& questions);

}  // namespace quoll::links

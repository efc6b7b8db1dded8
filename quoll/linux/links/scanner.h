#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The finder of links without its libraries: what it has to know of the world it asks.
///
/// - "http://", "https://", "ftp://" and a host, in any case, are a link as they stand; the host
///   may be any name or an address in "[...]", with a user before it and a port behind it.
/// - A name with a known top-level domain is a link to "http://"; one with a local part and "@"
///   before it is a link to "mailto:". It stands alone: not inside a path, an address or an escape.
/// - A name of two labels that reads like a file's ("notes.py") is no link, unless it begins with
///   "www." or a path follows.
/// - A link goes on to white space, "<", ">", a quote, or a closing bracket that was not opened in
///   it; then . , ! ? ; : at its end are left out.
/// - What no URL holds is percent-encoded; a host that is not ASCII is written in its ASCII form.
namespace quoll::links {

struct Questions {
  /// Whether a top-level domain is known; it is given in its ASCII form and in lower case.
  std::function<bool(std::string_view label)> is_top_level_domain;
  /// The ASCII form of a host that is not ASCII; none when it cannot be one.
  std::function<std::optional<std::string>(std::string_view host)> ascii_form;
};

struct Found {
  std::size_t location = 0;  ///< in bytes
  std::size_t length = 0;    ///< in bytes
  std::string url;
};

/// The links in `text`, in the order in which they occur; none overlaps another. Any bytes will do.
/// Every byte is looked at a bounded number of times, and each question is asked at most once a
/// name.
[[nodiscard]] std::vector<Found> scan(std::string_view text, const Questions& questions);

}  // namespace quoll::links

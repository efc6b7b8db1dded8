#include "quoll/foundation/nsurl.h"

#include <algorithm>
#include <utility>

#include "quoll/foundation/number_text.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/percent.h"
#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

bool is_escape_at(std::string_view text, std::size_t position) {
  return position + 2 < text.size() && digit_value(text[position + 1], 16) >= 0 &&
         digit_value(text[position + 2], 16) >= 0;
}

bool is_url_text(std::string_view text) {
  bool fragment_seen = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (is_url_character(text[i])) {
      continue;
    }
    if (text[i] == '%' && is_escape_at(text, i)) {
      i += 2;
    } else if (text[i] == '#' && !fragment_seen) {
      fragment_seen = true;
    } else {
      return false;
    }
  }
  return true;
}

std::optional<std::string> as_written(UrlPiece piece) {
  return piece ? std::optional<std::string>(*piece) : std::nullopt;
}

std::optional<std::string> decoded(UrlPiece piece) {
  return piece ? percent_decode(*piece) : std::nullopt;
}

UrlPiece without_trailing_slashes(UrlPiece path) {
  while (path && path->size() > 1 && path->back() == '/') {
    path->remove_suffix(1);
  }
  return path;
}

}  // namespace

NSURL::NSURL(std::string text, std::shared_ptr<NSURL> base)
    : text_(std::move(text)),
      base_(std::move(base)),
      resolved_(base_ ? resolve_reference(text_, base_->absolute_text()) : std::string()),
      parts_(split_parts(absolute_text())) {}

std::shared_ptr<NSURL> NSURL::URLWithString(std::string_view text) {
  return URLWithString(text, nullptr);
}

std::shared_ptr<NSURL> NSURL::URLWithString(std::string_view text,
                                            std::shared_ptr<NSURL> relativeToURL) {
  if (!is_url_text(text) || (text.empty() && !relativeToURL)) {
    return nullptr;
  }
  return std::shared_ptr<NSURL>(new NSURL(std::string(text), std::move(relativeToURL)));
}

std::shared_ptr<NSURL> NSURL::URLTakingString(std::string text) {
  if (!is_url_text(text) || text.empty()) {
    return nullptr;
  }
  return std::shared_ptr<NSURL>(new NSURL(std::move(text), nullptr));
}

std::shared_ptr<NSURL> NSURL::file_url(std::string_view absolute_path, bool is_folder) {
  if (absolute_path.empty()) {
    return nullptr;
  }
  std::string text = "file://" + percent_encode_path(absolute_path);
  if (is_folder && text.back() != '/') {
    text += '/';
  }
  return std::shared_ptr<NSURL>(new NSURL(std::move(text), nullptr));
}

std::optional<std::string> NSURL::scheme() const {
  return as_written(parts_.scheme);
}
std::optional<std::string> NSURL::host() const {
  return decoded(parts_.host);
}
std::optional<std::string> NSURL::user() const {
  return decoded(parts_.user);
}
std::optional<std::string> NSURL::password() const {
  return as_written(parts_.password);
}
std::optional<std::string> NSURL::parameterString() const {
  return as_written(parts_.parameters);
}
std::optional<std::string> NSURL::query() const {
  return as_written(parts_.query);
}
std::optional<std::string> NSURL::fragment() const {
  return as_written(parts_.fragment);
}

std::optional<std::string> NSURL::path() const {
  return decoded(without_trailing_slashes(parts_.path));
}

std::optional<std::int64_t> NSURL::port() const {
  const UrlPiece port = parts_.port;
  if (!port || port->empty() || !std::all_of(port->begin(), port->end(), is_ascii_digit)) {
    return std::nullopt;
  }
  return integer_of_text(*port);
}

bool NSURL::isFileURL() const {
  const UrlPiece scheme = parts_.scheme;
  return scheme && ascii_lower_case(*scheme) == "file";
}

bool NSURL::isEqual(const Object* other) const {
  const auto* url = dynamic_cast<const NSURL*>(other);
  return url != nullptr && url->text_ == text_ &&
         (base_ ? base_->isEqual(url->base_.get()) : url->base_ == nullptr);
}

std::shared_ptr<NSURL> URLByAppendingPathComponent(const std::shared_ptr<NSURL>& url,
                                                   std::string_view component) {
  if (!url) {
    return nullptr;
  }
  const std::string text = url->absoluteString();
  const std::size_t path_end = std::min(text.find_first_of("?#"), text.size());
  return NSURL::URLWithString(appending_path_component(std::string_view(text).substr(0, path_end),
                                                       percent_encode_path(component)) +
                              text.substr(path_end));
}

std::optional<std::string> file_system_path(const std::shared_ptr<NSURL>& url) {
  if (!url || !url->isFileURL()) {
    return std::nullopt;
  }
  const UrlPiece path = without_trailing_slashes(url->parts_.path);
  return path ? percent_decode_bytes(*path) : std::nullopt;
}

}  // namespace quoll::foundation

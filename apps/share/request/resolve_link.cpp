#include "apps/share/request/resolve_link.h"

#include <algorithm>
#include <array>
#include <span>

#include "quoll/foundation/percent.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/foundation/url_parts.h"

namespace quoll::share {

namespace {

using foundation::NSURL;

/// What a group of schemes stands for, when it is no link.
struct NoLink {
  std::span<const std::string_view> schemes;
  const char* refusal;
  const char* advice;
};

constexpr std::array<std::string_view, 3> kWithHost{"ftp", "http", "https"};
constexpr std::array<std::string_view, 17> kRemote{
    "afc",     "afp",        "camera", "cifs", "dav",      "davs", "fish", "gdrive", "google-drive",
    "gphoto2", "kdeconnect", "mtp",    "nfs",  "onedrive", "sftp", "smb",  "webdav"};
constexpr std::array<std::string_view, 21> kPlaces{"admin",
                                                   "applications",
                                                   "archive",
                                                   "baloosearch",
                                                   "burn",
                                                   "cdda",
                                                   "computer",
                                                   "desktop",
                                                   "network",
                                                   "programs",
                                                   "recent",
                                                   "recentdocuments",
                                                   "recentlyused",
                                                   "remote",
                                                   "settings",
                                                   "starred",
                                                   "tags",
                                                   "timeline",
                                                   "trash",
                                                   "x-nautilus-desktop",
                                                   "x-nautilus-search"};
constexpr std::array<std::string_view, 9> kOfABrowser{
    "about",      "blob",          "chrome",   "chrome-extension", "edge",
    "javascript", "moz-extension", "resource", "view-source"};
constexpr std::array<NoLink, 3> kNoLinks{{
    {kRemote, "it is a remote file",
     "copy it to this computer first, or open its folder in the file manager"},
    {kPlaces, "it is a place of the file manager, not a file",
     "copy the file into a folder and share it from there"},
    {kOfABrowser, "it means something in one browser only", "share the address of a web page"},
}};

bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// True when a link keeps the character at `position` as it is.
bool stays(std::string_view text, std::size_t position) {
  const std::string_view rest = text.substr(position);
  if (rest.front() == '#') {
    return text.find('#') == position;
  }
  if (rest.front() == '%') {
    return NSURL::URLWithString(rest.substr(0, 3)) != nullptr;
  }
  return NSURL::URLWithString(rest.substr(0, 1)) != nullptr;
}

/// True for a name with a dot whose end is that of many hosts and of few files.
bool looks_like_host(std::string_view name) {
  constexpr std::array<std::string_view, 4> kUsual{"com", "edu", "net", "org"};
  const std::size_t dot = name.rfind('.');
  const std::string last = foundation::ascii_lower_case(name.substr(dot + 1));
  const auto is_letter = [](char c) { return c >= 'a' && c <= 'z'; };
  return dot != std::string_view::npos && dot != 0 &&
         name.find_first_of("@ ") == std::string_view::npos &&
         (std::ranges::find(kUsual, last) != kUsual.end() ||
          (last.size() == 2 && std::ranges::all_of(last, is_letter)));
}

/// True for a host and a port, which look like a scheme and its rest: "example.org:8080".
bool is_host_with_port(std::string_view text) {
  const std::size_t colon = text.find(':');
  const std::string_view host = text.substr(0, colon);
  return colon != std::string_view::npos && colon + 1 < text.size() &&
         foundation::is_ascii_digit(text[colon + 1]) &&
         (looks_like_host(host) || foundation::ascii_lower_case(host) == "localhost");
}

std::string link_advice(std::string_view text) {
  return "for a link write https://" + foundation::printable(text);
}

bool is_mail_address(std::string_view text) {
  const std::size_t at = text.find('@');
  return at != std::string_view::npos && at != 0 &&
         text.find('@', at + 1) == std::string_view::npos && std::ranges::none_of(text, is_space) &&
         text.find_first_of("/:,;<>\"") == std::string_view::npos &&
         text.find('.', at + 2) != std::string_view::npos && text.back() != '.';
}

}  // namespace

std::optional<std::string> link_scheme(std::string_view text) {
  const auto scheme = foundation::split_reference(text).scheme;
  // One letter is a drive of another system; white space after the colon is a sentence.
  if (!scheme || scheme->size() < 2 || text.size() == scheme->size() + 1 ||
      is_space(text[scheme->size() + 1])) {
    return std::nullopt;
  }
  return foundation::ascii_lower_case(*scheme);
}

bool is_web_host(std::string_view text) {
  return foundation::ascii_lower_case(text.substr(0, 4)) == "www." && text.size() > 4 &&
         std::ranges::none_of(text, is_space);
}

bool is_remote_scheme(std::string_view scheme) {
  return std::ranges::find(kRemote, scheme) != kRemote.end();
}

std::string with_escapes(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (stays(text, i)) {
      out += text[i];
    } else {
      foundation::percent_escape_append(out, text[i]);
    }
  }
  return out;
}

ResolvedItem resolve_link(std::string_view text) {
  const std::string scheme = link_scheme(text).value_or("");
  for (const NoLink& kind : kNoLinks) {
    if (std::ranges::find(kind.schemes, scheme) != kind.schemes.end()) {
      return {nullptr, kind.refusal, kind.advice};
    }
  }
  if (is_host_with_port(text)) {
    return {nullptr, "it is no link", link_advice(text)};
  }
  if (text.find_first_of("\r\n") != std::string_view::npos) {
    return {nullptr, "the link has a line break", "write it in one line"};
  }
  auto url = NSURL::URLWithString(text);
  if (!url) {
    url = NSURL::URLWithString(with_escapes(text));
  }
  if (!url) {
    return {nullptr, "it cannot be made a link"};
  }
  if (std::ranges::find(kWithHost, scheme) != kWithHost.end() && !url->host()) {
    return {nullptr, "the link names no host", "write it as " + scheme + "://example.org/"};
  }
  return {std::move(url), {}};
}

std::string what_was_meant(std::string_view text) {
  if (is_mail_address(text)) {
    return "to send it to this address write --to " + foundation::printable(text);
  }
  return looks_like_host(text.substr(0, text.find('/'))) ? link_advice(text) : "";
}

}  // namespace quoll::share

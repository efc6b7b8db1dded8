#include "quoll/foundation/url_parts.h"

namespace quoll::foundation {

namespace {

/// Without what follows the last "/"; empty when there is none.
std::string_view folder_of(std::string_view path) {
  return path.substr(0, path.rfind('/') + 1);
}

/// Takes the last segment away, with the "/" in front of it.
void drop_last_segment(std::string& path) {
  const std::size_t slash = path.rfind('/');
  path.resize(slash == std::string::npos ? 0 : slash);
}

/// RFC 3986, 5.2.4: "." and ".." are carried out; a ".." that has nothing to leave is dropped.
std::string without_dot_segments(std::string_view path) {
  std::string out;
  while (!path.empty()) {
    if (path.starts_with("../")) {
      path.remove_prefix(3);
    } else if (path.starts_with("./") || path.starts_with("/./")) {
      path.remove_prefix(2);
    } else if (path.starts_with("/../")) {
      path.remove_prefix(3);
      drop_last_segment(out);
    } else if (path == "/.") {
      path = "/";
    } else if (path == "/..") {
      path = "/";
      drop_last_segment(out);
    } else if (path == "." || path == "..") {
      path = {};
    } else {
      const std::string_view segment = path.substr(0, path.find('/', 1));
      out += segment;
      path.remove_prefix(segment.size());
    }
  }
  return out;
}

std::string merged_path(const UrlReference& base, std::string_view path) {
  if (base.authority && base.path.empty()) {
    return "/" + std::string(path);
  }
  return std::string(folder_of(base.path)).append(path);
}

std::string joined(const UrlReference& reference, std::string_view path) {
  std::string text;
  const auto add = [&](const char* before, UrlPiece piece, const char* after) {
    if (piece) {
      text.append(before).append(*piece).append(after);
    }
  };
  add("", reference.scheme, ":");
  add("//", reference.authority, "");
  text += path;
  add("?", reference.query, "");
  add("#", reference.fragment, "");
  return text;
}

}  // namespace

std::string resolve_reference(std::string_view reference, std::string_view base) {
  UrlReference target = split_reference(reference);
  const UrlReference from = split_reference(base);
  if (target.scheme) {
    return joined(target, without_dot_segments(target.path));
  }
  target.scheme = from.scheme;
  if (target.authority) {
    return joined(target, without_dot_segments(target.path));
  }
  target.authority = from.authority;
  if (target.path.empty()) {
    if (!target.query) {
      target.query = from.query;
    }
    return joined(target, from.path);
  }
  return joined(
      target, without_dot_segments(target.path.starts_with('/') ? std::string(target.path)
                                                                : merged_path(from, target.path)));
}

}  // namespace quoll::foundation

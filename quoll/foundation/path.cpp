#include "quoll/foundation/path.h"

namespace quoll::foundation {

namespace {

std::string_view without_trailing_slashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') {
    path.remove_suffix(1);
  }
  return path;
}

}  // namespace

std::string_view last_path_component(std::string_view path) {
  path = without_trailing_slashes(path);
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

std::string_view path_extension(std::string_view path) {
  const std::string_view name = last_path_component(path);
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) {
    return {};
  }
  return name.substr(dot + 1);
}

std::string deleting_path_extension(std::string_view path) {
  const std::string_view extension = path_extension(path);
  path = without_trailing_slashes(path);
  return std::string(extension.empty() ? path : path.substr(0, path.size() - extension.size() - 1));
}

std::string appending_path_extension(std::string_view path, std::string_view extension) {
  std::string out(path);
  if (!path.empty() && !extension.empty()) {
    out.append(".").append(extension);
  }
  return out;
}

std::string appending_path_component(std::string_view path, std::string_view component) {
  std::string out(path);
  if (component.empty()) {
    return out;
  }
  if (!out.empty() && out.back() != '/') {
    out += '/';
  }
  if (!out.empty() && component.front() == '/') {
    component.remove_prefix(1);
  }
  return out.append(component);
}

bool is_absolute_path(std::string_view path) {
  return path.starts_with('/') || path.starts_with('~');
}

}  // namespace quoll::foundation

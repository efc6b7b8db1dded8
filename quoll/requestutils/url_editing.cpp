#include "quoll/requestutils/url_editing.h"

#include <utility>
#include <vector>

#include "quoll/foundation/path.h"

namespace quoll::RequestUtils {

namespace {

using foundation::Dictionary;
using foundation::List;
using foundation::Value;

/// A text split into its path, query and fragment, so that the path can be edited alone.
struct Pieces {
  std::string path;
  std::optional<std::string> query;
  std::optional<std::string> fragment;

  explicit Pieces(std::string_view text) : fragment(URLFragment(text)) {
    const std::string rest = stringByDeletingURLFragment(text);
    query = URLQuery(rest);
    path = stringByDeletingURLQuery(rest);
  }

  [[nodiscard]] std::string joined() const {
    return stringByAppendingURLFragment(stringByAppendingURLQuery(path, query), fragment);
  }
};

std::string replacing_last_component(std::string_view text, std::string_view component) {
  return stringByAppendingURLPathComponent(stringByDeletingLastURLPathComponent(text), component);
}

/// The list itself; a list of one for a text.
List elements(const Value& value) {
  const auto list = value.as<List>();
  return list ? list : List{value};
}

/// The merged value of a key that is on both sides.
Value merged(const Value& old_value, const Value& new_value, URLQueryOptions mode) {
  const bool texts = !old_value.nests() && !new_value.nests();
  if (texts && mode == URLQueryKeepFirstValue) {
    return old_value;
  }
  if (texts && mode != URLQueryCollectValues && mode != URLQueryAlwaysArrays) {
    return new_value;
  }
  List list = elements(old_value);
  for (const Value& element : elements(new_value)) {
    list.addObject(element);
  }
  return list;
}

void merge(Dictionary& parameters, const Dictionary& added, URLQueryOptions mode) {
  for (const auto& [key, value] : added) {
    const Value* const present = parameters.find(key);
    if (present != nullptr) {
      parameters.setObject(merged(*present, value, mode), key);
    } else if (mode == URLQueryAlwaysArrays) {
      parameters.setObject(List{value}, key);
    } else {
      parameters.setObject(value, key);
    }
  }
}

}  // namespace

std::optional<std::string> URLFragment(std::string_view text) {
  const std::size_t mark = text.find('#');
  return mark == std::string_view::npos ? std::nullopt
                                        : std::optional<std::string>(text.substr(mark + 1));
}

std::string stringByDeletingURLFragment(std::string_view text) {
  return std::string(text.substr(0, text.find('#')));
}

std::string stringByAppendingURLFragment(std::string_view text,
                                         std::optional<std::string_view> fragment) {
  std::string out(text);
  if (fragment) {
    out.append(text.find('#') == std::string_view::npos ? "#" : "").append(*fragment);
  }
  return out;
}

std::string stringByDeletingURLQuery(std::string_view text) {
  const auto range = rangeOfURLQuery(text);
  if (!range) {
    return std::string(text);
  }
  const std::string_view query = foundation::substring(text, *range);
  return std::string(text.substr(0, range->location))
      .append(text.substr(range->location + query.size()));
}

std::string stringByAppendingURLQuery(std::string_view text,
                                      std::optional<std::string_view> query) {
  if (!query || query->empty()) {
    return std::string(text);
  }
  std::string out = stringByDeletingURLFragment(text);
  const auto present = URLQuery(out);
  const char* const joint = !present ? "?" : present->empty() ? "" : "&";
  out.append(joint).append(*query);
  const auto fragment = URLFragment(text);
  return fragment && !fragment->empty() ? out.append("#").append(*fragment) : out;
}

std::string stringByReplacingURLQueryWithQuery(std::string_view text,
                                               std::optional<std::string_view> query) {
  return stringByAppendingURLQuery(stringByDeletingURLQuery(text), query);
}

std::string stringByMergingURLQuery(std::string_view text, std::optional<std::string_view> query) {
  return stringByMergingURLQuery(text, query, {});
}

std::string stringByMergingURLQuery(std::string_view text, std::optional<std::string_view> query,
                                    URLQueryOptions options) {
  const auto added = query ? URLQuery(*query) : std::nullopt;
  if (!added || added->empty()) {
    return std::string(text);
  }
  const auto present = URLQuery(text);
  if (!present || present->empty()) {
    return stringByAppendingURLQuery(text, added);
  }
  Dictionary parameters = URLQueryParametersWithOptions(*present, options);
  merge(parameters, URLQueryParametersWithOptions(*added, options),
        mode_of(options, URLQueryKeepLastValue));
  const auto range = *rangeOfURLQuery(text);
  return std::string(text.substr(0, range.location))
      .append(URLQueryWithParameters(parameters, options))
      .append(text.substr(range.location + static_cast<std::size_t>(range.length)));
}

std::string lastURLPathComponent(std::string_view text) {
  const std::string path = stringByDeletingURLQuery(stringByDeletingURLFragment(text));
  return path.substr(path.rfind('/') + 1);  // npos + 1 is 0: all of it when there is no "/"
}

std::string stringByDeletingLastURLPathComponent(std::string_view text) {
  Pieces pieces(text);
  const std::size_t slash = pieces.path.rfind('/');
  if (slash != std::string::npos) {
    pieces.path.resize(slash + 1);
  }
  return pieces.joined();
}

std::string stringByAppendingURLPathComponent(std::string_view text, std::string_view component) {
  Pieces pieces(text);
  if (component.starts_with('/')) {
    component.remove_prefix(1);
  }
  if (!pieces.path.empty() && !pieces.path.ends_with('/')) {
    pieces.path += '/';
  }
  pieces.path += component;
  return pieces.joined();
}

std::string URLPathExtension(std::string_view text) {
  return std::string(foundation::path_extension(lastURLPathComponent(text)));
}

std::string stringByDeletingURLPathExtension(std::string_view text) {
  return replacing_last_component(text,
                                  foundation::deleting_path_extension(lastURLPathComponent(text)));
}

std::string stringByAppendingURLPathExtension(std::string_view text, std::string_view extension) {
  return replacing_last_component(
      text, foundation::appending_path_extension(lastURLPathComponent(text), extension));
}

std::shared_ptr<foundation::NSURL> URLValueRelativeToURL(std::string_view text,
                                                         std::shared_ptr<foundation::NSURL> base) {
  return foundation::NSURL::URLWithString(text, std::move(base));
}

}  // namespace quoll::RequestUtils

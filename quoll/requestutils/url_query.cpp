#include "quoll/requestutils/url_query.h"

#include <algorithm>
#include <vector>

#include "quoll/foundation/exception.h"
#include "quoll/foundation/percent.h"

namespace quoll::RequestUtils {

namespace {

using foundation::Dictionary;
using foundation::List;
using foundation::Range;
using foundation::Value;

/// The text that a value holds. Raises for any other kind, since only texts can be written to a
/// query.
const std::string& encodable(const Value& value) {
  const std::string* text = value.stringValue();
  if (text == nullptr) {
    foundation::raise_invalid_argument("null cannot stand in a query");
  }
  return *text;
}

/// Builds a query string.
class Composition {
 public:
  void add(std::string_view encoded_key, bool in_brackets, const Value& value) {
    const std::string& text = encodable(value);
    if (!query_.empty()) {
      query_ += '&';
    }
    query_.append(encoded_key).append(in_brackets ? "[]=" : "=");
    foundation::percent_encode_append(query_, text);
  }

  [[nodiscard]] std::string take() { return std::move(query_); }

 private:
  std::string query_;
};

/// A piece of a query, between two "&". The value ends at a second "=": `a=b=c` has the value `b`.
struct Piece {
  std::string_view key;
  std::string_view value;
};

std::optional<Piece> split_piece(std::string_view piece) {
  const std::size_t equals = piece.find('=');
  if (equals == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view rest = piece.substr(equals + 1);
  return Piece{piece.substr(0, equals), rest.substr(0, rest.find('='))};
}

/// A decoded value. Null when it does not decode: storing null in a dictionary or list then raises.
Value decoded(std::string_view text) {
  auto plain = URLDecodedString(text, true);
  return plain ? Value(std::move(*plain)) : Value();
}

/// The query inside `text`, without its leading "?".
std::optional<std::string_view> query_in(std::string_view text) {
  const auto range = rangeOfURLQuery(text);
  if (!range) {
    return std::nullopt;
  }
  std::string_view query = foundation::substring(text, *range);
  if (query.starts_with('?')) {
    query.remove_prefix(1);
  }
  return query;
}

void store(Dictionary& parameters, std::string key, bool bracketed, Value value,
           URLQueryOptions mode) {
  Value* const present = parameters.find(key);
  if (present == nullptr) {
    const bool as_list =
        mode == URLQueryAlwaysArrays || (mode == URLQueryCollectValues && bracketed);
    // cppcheck-suppress accessMoved  ; one of the two
    parameters.add_new(as_list ? Value(List{std::move(value)}) : std::move(value), std::move(key));
  } else if (auto list = present->as<List>()) {
    list.addObject(std::move(value));
  } else if (mode == URLQueryKeepLastValue) {
    parameters.setObject(std::move(value), key);
  } else if (mode != URLQueryKeepFirstValue) {
    *present = List{*present, std::move(value)};
  }
}

void parse_piece(Dictionary& parameters, const Piece& piece, URLQueryOptions mode) {
  auto key = URLDecodedString(piece.key, true);
  if (!key) {
    foundation::raise_invalid_argument("a query's key is not percent-encoded UTF-8");
  }
  const bool bracketed = key->ends_with("[]");
  if (bracketed) {
    key->resize(key->size() - 2);
  }
  store(parameters, std::move(*key), bracketed, decoded(piece.value), mode);
}

}  // namespace

std::string URLEncodedString(std::string_view text) {
  return foundation::percent_encode(text);
}

std::optional<std::string> URLDecodedString(std::string_view text, bool plus_as_space) {
  return foundation::percent_decode(
      text, plus_as_space ? foundation::PlusSign::kSpace : foundation::PlusSign::kItself);
}

std::optional<Range> rangeOfURLQuery(std::string_view text) {
  const std::size_t end = std::min(text.find('#'), text.size());
  const std::size_t mark = text.find('?');
  if (mark != std::string_view::npos) {
    return Range{mark, static_cast<std::ptrdiff_t>(end) - static_cast<std::ptrdiff_t>(mark)};
  }
  if (text.substr(0, end).find('=') != std::string_view::npos) {
    return Range{0, static_cast<std::ptrdiff_t>(end)};
  }
  return std::nullopt;
}

std::optional<std::string> URLQuery(std::string_view text) {
  const auto query = query_in(text);
  return query ? std::optional<std::string>(*query) : std::nullopt;
}

std::string URLQueryWithParameters(const foundation::Dictionary& parameters) {
  return URLQueryWithParameters(parameters, {});
}

std::string URLQueryWithParameters(const Dictionary& parameters, URLQueryOptions options) {
  const URLQueryOptions mode = mode_of(options, URLQueryCollectValues);
  const bool brackets = (options & URLQueryBracketArrayKeys) != 0;
  const bool bracket_singles = mode == URLQueryAlwaysArrays && brackets;
  Composition query;
  std::string encoded_key;
  for (const auto& [key, value] : parameters) {
    encoded_key.clear();
    foundation::percent_encode_append(encoded_key, key);
    const auto list = value.as<List>();
    if (!list) {
      query.add(encoded_key, bracket_singles, value);
    } else if (mode == URLQueryKeepLastValue || mode == URLQueryKeepFirstValue) {
      if (!list.empty()) {
        const std::size_t index = mode == URLQueryKeepFirstValue ? 0 : list.count() - 1;
        query.add(encoded_key, false, list.objectAtIndex(index));
      }
    } else {
      for (const Value& element : list) {
        query.add(encoded_key, brackets, element);
      }
    }
  }
  return query.take();
}

Dictionary URLQueryParameters(std::string_view text) {
  return URLQueryParametersWithOptions(text, {});
}

Dictionary URLQueryParametersWithOptions(std::string_view text, URLQueryOptions options) {
  const URLQueryOptions mode = mode_of(options, URLQueryKeepLastValue);
  Dictionary parameters;
  const auto query = query_in(text);
  if (!query) {
    return parameters;
  }
  std::string_view rest = *query;
  constexpr std::size_t kUsual = 16;
  parameters.reserve(kUsual);
  while (true) {
    const std::size_t ampersand = rest.find('&');
    if (const auto piece = split_piece(rest.substr(0, ampersand))) {
      parse_piece(parameters, *piece, mode);
    }
    if (ampersand == std::string_view::npos) {
      return parameters;
    }
    rest.remove_prefix(ampersand + 1);
  }
}

}  // namespace quoll::RequestUtils

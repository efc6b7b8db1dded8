#pragma once

#include <string>

namespace quoll::share {

/// What the parser of a command line says of a missing value, "--title: 1 required TEXT missing",
/// in plain words: "--title needs a TEXT". Anything else stays.
inline std::string in_plain_words(std::string text) {
  const std::string between = ": 1 required ";
  const std::string end = " missing";
  const std::size_t at = text.find(between);
  if (at != std::string::npos && text.ends_with(end)) {
    text.resize(text.size() - end.size());
    text.replace(at, between.size(), " needs a ");
  }
  return text;
}

}  // namespace quoll::share

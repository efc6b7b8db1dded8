#pragma once

#include <string>

namespace quoll::share {

/// What the parser of a command line says of a missing value, "--title: 1 required TEXT missing",
/// in plain words: "--title needs a TEXT"; and of what it does not know, "there is no option
/// --nosuch". Anything else stays.
inline std::string in_plain_words(std::string text) {
  const std::string unexpected = " not expected: ";
  if (const std::size_t end = text.find(unexpected); end != std::string::npos) {
    const std::string all = text.substr(end + unexpected.size());
    const std::size_t last = all.rfind(" -");  // the one that was given first
    const std::string name = last == std::string::npos ? all : all.substr(last + 1);
    return name.starts_with('-') ? "there is no option " + name.substr(0, name.find_first_of(" ="))
                                 : name + " is not expected";
  }
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

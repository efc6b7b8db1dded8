#include "quoll/foundation/url_parts.h"

#include <gtest/gtest.h>

#include <functional>
#include <regex>

namespace quoll::foundation {

namespace {

/// Every text that differs from a URL by one byte, put in or put in the place of another.
void for_each_neighbour(const std::function<void(const std::string&)>& look) {
  for (const std::string seed : {"http://u:p@h:8/a/b;x?q=1#f", "mailto:x", "//h/", "/a:b", "?q"}) {
    for (int byte = 0; byte < 256; ++byte) {
      for (std::size_t place = 0; place <= seed.size(); ++place) {
        look(std::string(seed).insert(place, 1, static_cast<char>(byte)));
        look(std::string(seed).replace(place, 1, 1, static_cast<char>(byte)));
      }
    }
  }
}

std::optional<std::string> owned(UrlPiece piece) {
  return piece ? std::optional<std::string>(*piece) : std::nullopt;
}

std::optional<std::string> group(const std::smatch& match, std::size_t index) {
  return match[index].matched ? std::optional(match[index].str()) : std::nullopt;
}

// The expression of RFC 3986, appendix B, but that a scheme is held to its own characters.
TEST(SplitReference, KeepsToTheRfcsExpression) {
  const std::regex expression(
      R"((?:([A-Za-z][-A-Za-z0-9+.]*):)?(?://([^/?#]*))?([^?#]*)(?:\?([^#]*))?(?:#([\s\S]*))?)");
  for_each_neighbour([&](const std::string& text) {
    std::smatch match;
    ASSERT_TRUE(std::regex_match(text, match, expression)) << text;
    const UrlReference reference = split_reference(text);
    EXPECT_EQ(owned(reference.scheme), group(match, 1)) << text;
    EXPECT_EQ(owned(reference.authority), group(match, 2)) << text;
    EXPECT_EQ(reference.path, match[3].str()) << text;
    EXPECT_EQ(owned(reference.query), group(match, 4)) << text;
    EXPECT_EQ(owned(reference.fragment), group(match, 5)) << text;
  });
}

TEST(SplitParts, LosesNothing) {
  for_each_neighbour([](const std::string& text) {
    const UrlParts parts = split_parts(text);
    const UrlReference reference = split_reference(text);
    std::string joined;
    const auto add = [&](const char* before, UrlPiece piece, const char* after) {
      if (piece) {
        joined.append(before).append(*piece).append(after);
      }
    };
    add("", parts.scheme, ":");
    if (parts.scheme && text.substr(joined.size(), 1) != "/") {
      EXPECT_FALSE(parts.user || parts.password || parts.host || parts.port || parts.path ||
                   parts.parameters || parts.query || parts.fragment)
          << text;
      return;
    }
    joined += reference.authority ? "//" : "";
    add("", parts.user, "");
    add(":", parts.password, "");
    joined += parts.user ? "@" : "";
    add("", parts.host, "");
    add(":", parts.port, "");
    add("", parts.path, "");
    add(";", parts.parameters, "");
    add("?", parts.query, "");
    add("#", parts.fragment, "");
    EXPECT_EQ(joined, text);
  });
}

}  // namespace

}  // namespace quoll::foundation

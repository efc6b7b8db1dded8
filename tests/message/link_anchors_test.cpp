#include "quoll/message/link_anchors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace quoll {
namespace {

using Links = std::vector<std::string>;

struct Result {
  std::string text;
  std::size_t done = 0;  // how many links were replaced
  friend bool operator==(const Result&, const Result&) = default;
};

void PrintTo(const Result& result, std::ostream* out) {
  *out << result.done << " links: " << result.text;
}

Result anchored(std::string text, const Links& links, std::size_t longest) {
  const std::string* const left = anchor_links(text, links, longest);
  return {std::move(text), left == nullptr ? links.size() : std::size_t(left - links.data())};
}

/// The rule, step for step.
Result by_rule(const std::string& text, const Links& links, std::size_t longest) {
  Result result{text};
  for (const std::string& link : links) {
    std::string next = result.text;
    const std::string anchor =
        std::string("<a href='").append(link).append("'>").append(link).append("</a>");
    for (std::size_t at = next.find(link); at != std::string::npos && next.size() <= longest;
         at = next.find(link, at + anchor.size())) {
      next.replace(at, link.size(), anchor);
    }
    if (next.size() > longest) {
      break;
    }
    result = {std::move(next), result.done + 1};
  }
  return result;
}

/// Short words of few letters: they overlap, repeat, and begin, end and hold each other.
class RandomText {
 public:
  explicit RandomText(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t end) { return random_() % end; }
  std::string letters(std::string_view alphabet, std::size_t longest) {
    std::string out;
    for (std::size_t length = below(longest + 1); length > 0; --length) {
      out += alphabet[below(alphabet.size())];
    }
    return out;
  }

 private:
  std::mt19937 random_;
};

TEST(AnchorLinks, FollowsTheRuleForAnyLinks) {
  for (unsigned seed = 0; seed < 20'000; ++seed) {
    RandomText random(seed);
    const std::string text = random.letters("a:a:a: <", 40);
    Links links;
    for (std::size_t count = random.below(8); count > 0; --count) {
      const std::size_t before = random.below(4);
      links.push_back(std::string(before, 'a') + ":" + random.letters("a:", 6));
    }
    for (const std::size_t longest : {std::size_t{100'000}, 20 + random.below(400)}) {
      ASSERT_EQ(anchored(text, links, longest), by_rule(text, links, longest))
          << "seed " << seed << ", at most " << longest;
    }
  }
}

TEST(AnchorLinks, FollowsTheRuleForLinksThatStandInTheMarkupToo) {
  for (unsigned seed = 0; seed < 5'000; ++seed) {
    RandomText random(seed);
    const std::string text = random.letters("a:h<>'/", 30);
    Links links;
    for (std::size_t count = random.below(5); count > 0; --count) {
      links.push_back("a" + random.letters("a:h<>'/", 2));
    }
    for (const std::size_t longest : {std::size_t{100'000}, 20 + random.below(400)}) {
      ASSERT_EQ(anchored(text, links, longest), by_rule(text, links, longest))
          << "seed " << seed << ", at most " << longest;
    }
  }
}

TEST(AnchorLinks, StopsAtTheVeryByte) {
  const std::string link = "h:x";
  const std::size_t exact = std::string("<a href='h:x'>h:x</a> .").size();
  const std::string markup = "<br>";  // in a list with this one, all are replaced one by one
  for (const Links& links : {Links{link}, Links{link, markup}}) {
    EXPECT_EQ(anchored("h:x .", links, exact).done, links.size());
    EXPECT_EQ(anchored("h:x .", links, exact - 1), (Result{"h:x .", 0}));
  }
  EXPECT_EQ(anchored("h:x h:x .", {"h:x .", "h:x", "."}, 40).done, 1U)
      << "none behind the one that is left out, though it would fit";
  EXPECT_EQ(anchored("12345", {"q:r"}, 4), (Result{"12345", 0})) << "too long from the start";
  EXPECT_EQ(anchored("1234", {"q:r"}, 4), (Result{"1234", 1}));
  EXPECT_EQ(anchored("12345", {}, 4), (Result{"12345", 0}));
}

/// A walk over the text for each link would not end before the test's time is up.
TEST(AnchorLinks, GrowsWithTheTextOnly) {
  constexpr std::size_t kSize = std::size_t{2} << 20U;
  constexpr std::size_t kLongest = std::size_t{64} << 20U;
  const auto repeated = [](const std::string& piece) {
    std::string out;
    while (out.size() < kSize) {
      out += piece;
    }
    return out;
  };

  Links links;
  std::string text;
  while (text.size() < kSize) {
    links.push_back("http://h/" + std::to_string(links.size()) + "/");
    text += links.back() + " ";
  }
  EXPECT_EQ(anchored(text, links, kLongest).done, links.size()) << "each stands once";
  EXPECT_EQ(anchored(repeated("h/1 "), links, kLongest), (Result{repeated("h/1 "), links.size()}))
      << "none stands in the text";
  EXPECT_EQ(anchored(text, Links(links.size(), "http://g/"), kLongest).text, text)
      << "the same one again and again, and nowhere";
  EXPECT_LT(anchored(text, Links(links.size(), links[0]), kLongest).done, 30U)
      << "the same one again and again, once";

  const std::string run(kSize / 3, 'b');
  EXPECT_EQ(
      anchored("h:x" + run + " " + run + run, {"h:x" + run, "h:x" + run + run}, kLongest).done, 2U)
      << "almost found at every byte";

  // Each begins with those before it, and holds them too.
  Links nested;
  std::string chain;
  for (std::size_t size = 0; size < kSize; size += nested.back().size() + 1) {
    nested.push_back((nested.empty() ? "" : nested.back()) + "h:/");
    chain += nested.back() + " ";
  }
  EXPECT_EQ(anchored(chain, nested, kLongest).done, nested.size())
      << "behind the shortest one the longer ones stand nowhere";
  std::reverse(nested.begin(), nested.end());
  EXPECT_LT(anchored(chain, nested, kLongest).done, nested.size()) << "the longest one first";

  const std::string one = repeated("http://h/");
  EXPECT_EQ(anchored(one, {one, "http://h/x"}, kLongest).done, 2U) << "one word, one link";
}

}  // namespace
}  // namespace quoll

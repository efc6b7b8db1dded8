// Random documents written by another library: what comes back is what went in.

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <string>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/property_list.h"

namespace quoll::foundation {
namespace {

struct Free {
  void operator()(plist_t node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, Free>;

class Documents {
 public:
  explicit Documents(unsigned seed) : random_(seed) {}

  /// The same document in both libraries.
  std::pair<plist_t, Value> any(int depth) {
    const int kind = below(depth > 0 ? 8 : 6);
    switch (kind) {
      case 0: {
        const std::string text = this->text();
        return {plist_new_string(text.c_str()), text};
      }
      case 1: {
        const bool boolean = below(2) == 1;
        return {plist_new_bool(boolean ? 1 : 0), boolean};
      }
      case 2: {
        const std::int64_t integer = this->integer();
        return {plist_new_uint(static_cast<std::uint64_t>(integer)), integer};
      }
      case 3: {
        const double real = static_cast<double>(below(2'000'000) - 1'000'000) / 64;
        return {plist_new_real(real), real};
      }
      case 4:
        return bytes();
      case 5:
        return date();
      case 6:
        return list(depth);
      default:
        return dictionary(depth);
    }
  }

 private:
  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }

  /// Of every length; the other library makes no negative ones.
  std::int64_t integer() {
    const auto bits = static_cast<std::uint64_t>(random_()) << 32U ^ random_();
    return static_cast<std::int64_t>(bits >> (1 + below(63)));
  }

  std::string text() {
    constexpr std::string_view kPieces[] = {
        "a",        "B c",          "&",   "<b>",  "\"'",
        "\xC3\xA9", "\xE2\x82\xAC", "]]>", "&lt;", "\xF0\x9F\x98\x8B"};
    std::string out;
    for (int i = below(20); i > 0; --i) {
      out += kPieces[below(10)];
    }
    return out;
  }

  std::pair<plist_t, Value> bytes() {
    Bytes bytes(static_cast<std::size_t>(below(100)) + 1);
    for (unsigned char& byte : bytes) {
      byte = static_cast<unsigned char>(below(256));
    }
    return {plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size()), bytes};
  }

  std::pair<plist_t, Value> date() {
    constexpr std::int32_t kFirstMomentOf2001 = 978307200;
    const std::int32_t seconds = below(2'000'000'000) - 1'000'000'000;
    return {plist_new_date(seconds, 0), Date{static_cast<double>(seconds) + kFirstMomentOf2001}};
  }

  std::pair<plist_t, Value> list(int depth) {
    plist_t node = plist_new_array();
    List list;
    for (int i = below(20); i > 0; --i) {
      auto [inner, value] = any(depth - 1);
      plist_array_append_item(node, inner);
      list.addObject(value);
    }
    return {node, list};
  }

  std::pair<plist_t, Value> dictionary(int depth) {
    plist_t node = plist_new_dict();
    Dictionary dictionary;
    for (int i = below(20); i > 0; --i) {
      auto [inner, value] = any(depth - 1);
      const std::string key = text() + std::to_string(i);
      plist_dict_set_item(node, key.c_str(), inner);
      dictionary.setObject(value, key);
    }
    return {node, dictionary};
  }

  std::mt19937 random_;
};

/// The library's writers answer nothing in some of its versions and an error's number in others.
template <typename Write>
std::string written(plist_t node, Write write) {
  char* bytes = nullptr;
  std::uint32_t size = 0;
  write(node, &bytes, &size);
  std::string out(bytes, size);
  std::free(bytes);
  return out;
}

TEST(PropertyListOracle, ReadsWhatAnotherLibraryWrites) {
  constexpr unsigned kDocuments = 300;
  for (unsigned seed = 0; seed < kDocuments; ++seed) {
    const auto [made, value] = Documents(seed).any(4);
    const Node node(made);
    const auto xml = read_property_list(written(node.get(), plist_to_xml));
    const auto binary = read_property_list(written(node.get(), plist_to_bin));
    ASSERT_TRUE(xml) << seed;
    ASSERT_TRUE(binary) << seed;
    EXPECT_EQ(*xml, value) << seed;
    EXPECT_EQ(*binary, value) << seed;
    EXPECT_EQ(xml->kind(), value.kind()) << seed;
    EXPECT_EQ(binary->kind(), value.kind()) << seed;
  }
}

TEST(PropertyListOracle, AgreesOnTheEndsOfIntegers) {
  for (const std::int64_t number :
       {std::int64_t{0}, std::int64_t{255}, std::int64_t{256}, std::int64_t{65535},
        std::int64_t{65536}, std::int64_t{4294967295}, std::int64_t{4294967296},
        std::numeric_limits<std::int64_t>::max()}) {
    const Node node(plist_new_uint(static_cast<std::uint64_t>(number)));
    EXPECT_EQ(read_property_list(written(node.get(), plist_to_xml)), Value(number)) << number;
    EXPECT_EQ(read_property_list(written(node.get(), plist_to_bin)), Value(number)) << number;
  }
}

}  // namespace
}  // namespace quoll::foundation

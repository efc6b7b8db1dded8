#include "quoll/foundation/percent.h"

#include <gtest/gtest.h>

#include <random>

namespace quoll::foundation {
namespace {

TEST(PercentEncode, KeepsTheUnreservedOnly) {
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const bool unreserved = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                            (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' || c == '~';
    char escaped[4];
    std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(byte));
    EXPECT_EQ(percent_encode(std::string(1, c)), unreserved ? std::string(1, c) : escaped) << byte;
  }
}

TEST(PercentEncode, WritesUtf8Bytes) {
  EXPECT_EQ(percent_encode("a b&c=d/é"), "a%20b%26c%3Dd%2F%C3%A9");
  EXPECT_EQ(percent_encode(""), "");
}

TEST(PercentEncodePath, KeepsWhatMeansNothingInAPath) {
  EXPECT_EQ(percent_encode_path("/a b/!$&'()*+,:=@-._~;?#%[]\xFF"),
            "/a%20b/!$&'()*+,:=@-._~%3B%3F%23%25%5B%5D%FF");
}

TEST(PercentEscapeAppend, WritesTwoCapitalDigits) {
  std::string out = "a";
  percent_escape_append(out, '\xAF');
  EXPECT_EQ(out, "a%AF");
}

TEST(PercentDecode, ReadsEscapesOfEitherCase) {
  EXPECT_EQ(percent_decode("%c3%A9"), "é");
  EXPECT_EQ(percent_decode("a+b%20c"), "a+b c");
  EXPECT_EQ(percent_decode("a+b%20c", PlusSign::kSpace), "a b c");
  EXPECT_EQ(percent_decode("%2B", PlusSign::kSpace), "+") << "an escaped plus stays a plus";
  EXPECT_EQ(percent_decode("a%00b"), std::string("a\0b", 3));
  EXPECT_EQ(percent_decode(""), "");
}

TEST(PercentDecode, WorksAtEveryPlaceOfALongText) {
  for (std::size_t size = 0; size < 200; ++size) {
    for (std::size_t at = 0; at < size; at += 1 + size / 20) {
      std::string text(size, 'a');
      text.insert(at, "%41");
      std::string expected(size, 'a');
      expected.insert(at, "A");
      EXPECT_EQ(percent_decode(text), expected) << size << " " << at;
      text[at + 1] = 'x';
      EXPECT_EQ(percent_decode(text), std::nullopt) << size << " " << at;
    }
  }
}

TEST(PercentDecode, RefusesMalformedEscapes) {
  for (const auto text : {"%", "%4", "%G0", "%0G", "a%", "abc%4", "%%41", "%-1", "% 1"}) {
    EXPECT_EQ(percent_decode(text), std::nullopt) << text;
    EXPECT_EQ(percent_decode_bytes(text), std::nullopt) << text;
  }
}

TEST(PercentDecode, RefusesWhatIsNotUtf8) {
  EXPECT_EQ(percent_decode("%FF"), std::nullopt);
  EXPECT_EQ(percent_decode("%C3"), std::nullopt);
  EXPECT_EQ(percent_decode("\xFF"), std::nullopt) << "also when it is not escaped";
  EXPECT_EQ(percent_decode_bytes("%FF"), "\xFF") << "bytes are bytes";
}

TEST(PercentDecode, TellsUtf8AtEveryPlaceOfALongText) {
  constexpr struct {
    const char* text;
    bool utf8;
    const char* reason;
  } rows[] = {
      {"%C3%A9", true, "one character"},
      {"%C3-%A9", false, "something plain inside a character"},
      {"%C3\xA9", true, "half of a character escaped"},
      {"\xC3%A9", true, "the other half escaped"},
      {"\xC3\xA9%20", true, "a character that is not escaped"},
      {"\xA9%20", false, "a continuation alone, not escaped"},
      {"%A9", false, "a continuation alone"},
      {"%C3%20", false, "cut off by an escape"},
      {"%F0%9F%98%80", true, "four bytes"},
      {"%F0%9F%98-", false, "three of four"},
      {"%ED%A0%80", false, "a surrogate"},
  };
  for (const auto& row : rows) {
    for (std::size_t before = 0; before < 200; ++before) {
      for (const std::size_t behind : {0U, 1U, 90U, 200U}) {
        const std::string text = std::string(before, 'a') + row.text + std::string(behind, 'b');
        const auto bytes = percent_decode_bytes(text);
        const auto decoded = percent_decode(text);
        ASSERT_TRUE(bytes);
        ASSERT_EQ(decoded.has_value(), row.utf8) << row.reason << ' ' << before << ' ' << behind;
        ASSERT_TRUE(!decoded || decoded == bytes) << row.reason;
      }
    }
  }
}

TEST(PercentEncode, GoesOnInLongTexts) {
  for (std::size_t length = 1000; length < 4200; length += 7) {
    std::string text;
    std::string encoded;
    while (text.size() < length) {
      text += text.size() % 3 == 0 ? " " : "a";
      encoded += text.back() == ' ' ? "%20" : "a";
    }
    ASSERT_EQ(percent_encode(text), encoded) << length;
  }
}

TEST(PercentCodec, DecodesWhatItEncodes) {
  std::mt19937 random(20240307);
  for (int round = 0; round < 200; ++round) {
    std::string bytes(random() % 20000, '\0');
    for (char& byte : bytes) {
      byte = static_cast<char>(random());
    }
    EXPECT_EQ(percent_decode_bytes(percent_encode(bytes)), bytes);
    EXPECT_EQ(percent_decode_bytes(percent_encode_path(bytes)), bytes);
  }
}

}  // namespace
}  // namespace quoll::foundation

#include "quoll/foundation/base64.h"

#include <gtest/gtest.h>

#include <string>

namespace quoll::foundation {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

Bytes bytes(std::string_view text) {
  return {text.begin(), text.end()};
}

/// What the digits of a text stand for, gathered bit by bit.
std::string decoded_bit_by_bit(std::string_view text) {
  std::string out;
  std::uint32_t bits = 0;
  unsigned count = 0;
  for (const char c : text) {
    const std::size_t value = kAlphabet.find(c);
    if (value != std::string_view::npos) {
      bits = (bits << 6U | static_cast<std::uint32_t>(value)) & 0xFFFFU;
      count += 6;
    }
    if (count >= 8) {
      count -= 8;
      out += static_cast<char>(bits >> count);
    }
  }
  return out;
}

std::string encoded_bit_by_bit(std::string_view text) {
  std::string out;
  std::uint32_t bits = 0;
  unsigned count = 0;
  for (const char c : text) {
    bits = (bits << 8U | static_cast<unsigned char>(c)) & 0xFFFFU;
    for (count += 8; count >= 6;) {
      count -= 6;
      out += kAlphabet[bits >> count & 63U];
    }
  }
  if (count != 0) {
    out += kAlphabet[bits << (6 - count) & 63U];
  }
  return out.append((4 - out.size() % 4) % 4, '=');
}

struct Row {
  std::string_view text;
  std::string_view bytes;
  std::string_view reason;
};

TEST(Base64, IsWrittenAndReadBack) {
  const Row kRows[] = {
      {"", "", "nothing"},
      {"Zg==", "f", "one byte: two digits and padding"},
      {"Zm8=", "fo", "two bytes"},
      {"Zm9v", "foo", "a whole group"},
      {"Zm9vYmFy", "foobar", "two groups"},
      {"Zm9vYmFyIQ==", "foobar!", "two groups and a byte"},
      {"Zm9vYmFyISE=", "foobar!!", "a whole word"},
      {"Zm9vYmFyIT8h", "foobar!?!", "a word and a byte"},
      {"+//+", "\xFB\xFF\xFE", "the last two digits"},
      {"//8=", "\xFF\xFF", "every bit of two bytes"},
      {"/w==", "\xFF", "every bit of a byte"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(base64_encode(row.bytes), row.text) << row.reason;
    EXPECT_EQ(base64_encode(bytes(row.bytes)), row.text) << row.reason;
    EXPECT_EQ(base64_decode(row.text), bytes(row.bytes)) << row.reason;
    EXPECT_EQ(base64_decode_ignoring_unknown(row.text), bytes(row.bytes)) << row.reason;
    EXPECT_EQ(base64_decode_digits(row.text), row.bytes) << row.reason;
  }
}

TEST(Base64, HasEveryDigitAtEveryPlace) {
  for (std::size_t value = 0; value < kAlphabet.size(); ++value) {
    for (std::size_t place = 0; place < 4; ++place) {
      std::string text = "AAAAAAAA";
      text[place] = kAlphabet[value];
      const auto bits = static_cast<std::uint32_t>(value << (18 - 6 * place));
      const std::string expected{static_cast<char>(bits >> 16),
                                 static_cast<char>(bits >> 8),
                                 static_cast<char>(bits),
                                 0,
                                 0,
                                 0};
      EXPECT_EQ(base64_decode_digits(text), expected) << text;
      EXPECT_EQ(base64_encode(expected), text);
    }
  }
}

TEST(Base64, WritesEveryByteAtEveryPlace) {
  for (int byte = 0; byte < 256; ++byte) {
    for (std::size_t place = 0; place < 16; ++place) {
      std::string text = "sixteen bytes...";
      text[place] = static_cast<char>(byte);
      EXPECT_EQ(base64_encode(text), encoded_bit_by_bit(text)) << byte << " at " << place;
    }
  }
}

TEST(Base64, ReadsEveryByteAtEveryPlace) {
  constexpr std::string_view kText = "Zm9vYmFyISEh";
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const bool digit = kAlphabet.find(c) != std::string_view::npos;
    for (std::size_t place = 0; place < kText.size(); ++place) {
      std::string text(kText);
      text[place] = c;
      const std::string expected = decoded_bit_by_bit(text);
      const bool padding = c == '=' && place == kText.size() - 1;
      EXPECT_EQ(base64_decode_digits(text), expected) << byte << " at " << place;
      const auto whole = digit || padding ? std::optional(bytes(expected)) : std::nullopt;
      EXPECT_EQ(base64_decode(text), whole) << byte << " at " << place;
      EXPECT_EQ(base64_decode_ignoring_unknown(text), whole) << byte << " at " << place;
    }
  }
}

TEST(Base64, ReadsOnWithEveryByteBetween) {
  constexpr std::string_view kText = "Zm9vYmFyISEh";
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const bool digit = kAlphabet.find(c) != std::string_view::npos;
    for (std::size_t place = 0; place <= kText.size(); ++place) {
      const std::string text = std::string(kText).insert(place, 1, c);
      const std::string expected = decoded_bit_by_bit(text);
      EXPECT_EQ(base64_decode_digits(text), expected) << byte << " before " << place;
      EXPECT_EQ(base64_decode(text), std::nullopt) << byte << " before " << place;
      EXPECT_EQ(base64_decode_ignoring_unknown(text),
                digit || c == '=' ? std::nullopt : std::optional(bytes(expected)))
          << byte << " before " << place;
    }
  }
}

TEST(Base64, ReadsBackEveryLength) {
  std::string text;
  for (int length = 0; length < 70; ++length) {
    const std::string encoded = base64_encode(text);
    EXPECT_EQ(encoded.size(), (text.size() + 2) / 3 * 4);
    EXPECT_EQ(base64_decode(encoded), bytes(text)) << length;
    EXPECT_EQ(base64_decode_ignoring_unknown(encoded), bytes(text)) << length;
    EXPECT_EQ(base64_decode_digits(encoded), text) << length;
    text += static_cast<char>(length * 73 + 129);
  }
}

TEST(Base64, EndsWhereTheTextEnds) {
  constexpr std::string_view kLonger = "Zm9vYmFyZm9vYmFy";
  for (std::size_t size = 0; size < kLonger.size(); ++size) {
    const std::string_view text = kLonger.substr(0, size);  // more digits stand behind it
    const auto whole =
        size % 4 == 0 ? std::optional(bytes(decoded_bit_by_bit(text))) : std::nullopt;
    EXPECT_EQ(base64_encode(text), encoded_bit_by_bit(text)) << size;
    EXPECT_EQ(base64_decode(text), whole) << size;
    EXPECT_EQ(base64_decode_ignoring_unknown(text), whole) << size;
    EXPECT_EQ(base64_decode_digits(text), decoded_bit_by_bit(text)) << size;
  }
}

TEST(Base64Strict, RefusesEverythingElse) {
  const struct {
    std::string_view text;
    std::string_view reason;
  } kRows[] = {
      {"Zg", "padding is missing"},
      {"Zg=", "half of the padding"},
      {"Zm8", "padding of two bytes is missing"},
      {"Zh==", "the lowest bit beyond the byte"},
      {"Zo==", "the highest bit beyond the byte"},
      {"Zm9=", "the lowest bit beyond two bytes"},
      {"Zm+=", "the highest bit beyond two bytes"},
      {"Zm 9v", "a blank"},
      {"Zm9v\n", "a line break"},
      {"Zm9v   ", "blanks"},
      {"Zm9v    ", "a group of blanks"},
      {"Z===", "a byte has two digits"},
      {"=", "padding alone"},
      {"==", "padding alone"},
      {"====", "padding of nothing"},
      {"Zm-_", "the URL alphabet"},
      {"Zg==Zg==", "padding in the middle"},
      {"Zg==Zm9v", "padding in the middle, a whole group behind it"},
      {"Z=g=", "padding inside a group"},
      {"Zm9vZg", "a whole group and one without its padding"},
      {"\xDA\xED\xB9\xF6", "digits with their highest bit set"},
  };
  for (const auto& row : kRows) {
    EXPECT_FALSE(base64_decode(row.text)) << row.reason;
  }
}

TEST(Base64IgnoringUnknown, SkipsWhatIsNeitherDigitNorPadding) {
  const Row kRows[] = {
      {"Zm9v\n", "foo", "a line break at the end"},
      {" Z\tm\r\n9 v ", "foo", "between all digits"},
      {"Zg=\n=\n", "f", "inside and behind the padding"},
      {"Zm8\n=", "fo", "before the padding"},
      {"Z\xC3\xA9g==", "f", "a character that is not ASCII"},
      {"\xDAZg==", "f", "a byte whose low bits are a digit's"},
      {"Z-g_==", "f", "the URL alphabet"},
      {"Zh==", "f", "bits beyond the byte count for nothing"},
      {"Zm9=", "fo", "bits beyond two bytes count for nothing"},
      {"\n -!", "", "no characters at all"},
      {std::string_view("Z\0g==", 5), "f", "a zero byte"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(base64_decode_ignoring_unknown(row.text), bytes(row.bytes)) << row.reason;
  }
}

TEST(Base64IgnoringUnknown, RefusesWrongPadding) {
  const struct {
    std::string_view text;
    std::string_view reason;
  } kRows[] = {
      {"Zg", "two are missing"},
      {"Zg=", "one is missing"},
      {"Zm8", "the only one is missing"},
      {"Z", "one digit"},
      {"Z===", "one digit cannot be filled up"},
      {"Zm8==", "one too many for two bytes"},
      {"Zg===", "one too many for a byte"},
      {"Zm9v=", "one after a whole group"},
      {"Zm9v====", "a group of padding after a whole group"},
      {"Zg======", "a group of padding too many"},
      {"=", "padding of nothing"},
      {"====", "a group of padding of nothing"},
      {"=Zg=", "padding in front"},
      {"Z=g=", "padding in the middle"},
      {"Zg==Zg==", "a digit after padding"},
      {"Zg==\nA", "a digit after padding and a line break"},
      {"Zm8=/", "the last digit of the alphabet after padding"},
  };
  for (const auto& row : kRows) {
    EXPECT_FALSE(base64_decode_ignoring_unknown(row.text)) << row.reason;
  }
}

TEST(Base64Digits, DecodesEveryDigitWhereverItStands) {
  const Row kRows[] = {
      {"Zm 9v\n", "foo", "blanks and line breaks"},
      {"Zg", "f", "no padding"},
      {"Zm8", "fo", "no padding of two bytes"},
      {"Zg==Zm8=",
       "f\x06"
       "f",
       "padding is no end: the digits are one stream"},
      {"=Zm9v", "foo", "padding in front"},
      {"Z", "", "one digit"},
      {"=", "", "padding alone"},
      {"Zm9vZ", "foo", "one digit after a whole group"},
      {"Zm9v=Y=m=F=y", "foobar", "a whole group, then others between"},
      {"Z=m9vYmFy", "foobar", "another inside the first group, then a whole group"},
      {"\xDA\xED\xB9\xF6Zg", "f", "bytes whose low bits are a digit's"},
      {"Z\xC3\xA9g", "f", "a character that is not ASCII"},
      {"Zh", "f", "bits beyond the byte count for nothing"},
      {"-_", "", "the URL alphabet"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(base64_decode_digits(row.text), row.bytes) << row.reason;
  }
}

}  // namespace

}  // namespace quoll::foundation

// The loops for AVX2 answer what those in plain C++ do, for texts of every length.

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/base64_kernel.h"
#include "quoll/foundation/percent_kernel.h"
#include "quoll/foundation/utf8_kernel.h"

namespace quoll::foundation {
namespace {

constexpr std::size_t kMostBytes = 150;  // several blocks and every rest
constexpr percent::KeptCharacters kKept("ABCXYZabcxyz0189-._~", "/@");

/// A copy without a byte behind it, so that a sanitizer sees one that is read too far.
class Exactly {
 public:
  explicit Exactly(std::string_view text) : bytes_(new char[text.size()]), size_(text.size()) {
    text.copy(bytes_.get(), text.size());
  }
  [[nodiscard]] std::string_view text() const { return {bytes_.get(), size_}; }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_;
};

std::string encoded(const percent::Kernel& kernel, std::string_view text) {
  std::vector<char> to(3 * text.size() + percent::kSlack);
  return {to.data(), kernel.encode(text, kKept, to.data())};
}

std::optional<std::string> decoded(const percent::Kernel& kernel, std::string_view text,
                                   char plus) {
  std::vector<char> to(text.size() + percent::kSlack);
  char* const end = kernel.decode(text, plus, to.data());
  return end == nullptr ? std::nullopt : std::optional(std::string(to.data(), end));
}

/// Pieces in random order up to that length, and then cut to it.
std::string random_text(std::mt19937& random, const std::vector<std::string>& pieces,
                        std::size_t size) {
  std::string text;
  while (text.size() < size) {
    text += pieces[random() % pieces.size()];
  }
  text.resize(size);
  return text;
}

std::vector<std::string> every_byte() {
  std::vector<std::string> bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes.emplace_back(1, static_cast<char>(byte));
  }
  return bytes;
}

class PercentKernel : public testing::Test {
 protected:
  void SetUp() override {
    if (percent::avx2() == nullptr) {
      GTEST_SKIP() << "this processor has no AVX2";
    }
  }

  static void expect_same(std::string_view text) {
    const Exactly exact(text);
    EXPECT_EQ(encoded(*percent::avx2(), exact.text()), encoded(percent::portable(), text)) << text;
    for (const char plus : {'+', ' '}) {
      EXPECT_EQ(decoded(*percent::avx2(), exact.text(), plus),
                decoded(percent::portable(), text, plus))
          << text;
    }
  }

  std::mt19937 random_{1};
};

TEST_F(PercentKernel, IsTheSameForEveryByteAtEveryPlace) {
  for (const std::string& byte : every_byte()) {
    for (std::size_t at = 0; at < 40; ++at) {
      std::string text(at, 'a');
      text += byte + std::string(40, 'b');
      expect_same(text);
    }
  }
}

TEST_F(PercentKernel, IsTheSameForEscapesOfAnyKind) {
  const std::vector<std::string> good = {"a",   "bc",  "+", "%41",       "%e4",
                                         "%FF", "%0a", "é", "plain text"};
  std::vector<std::string> bad = good;
  bad.insert(bad.end(), {"%", "%4", "%4g", "%G4", "%%41", "%:0", "%/a", "%@1", "%`f", "%\xC1\x31"});
  for (std::size_t size = 0; size < kMostBytes; ++size) {
    for (int i = 0; i < 20; ++i) {
      expect_same(random_text(random_, good, size));
      expect_same(random_text(random_, bad, size));
      expect_same(random_text(random_, {"%41", "%42"}, size));
    }
  }
}

TEST_F(PercentKernel, RefusesEveryDigitThatIsNone) {
  for (const std::string& byte : every_byte()) {
    for (std::size_t digit : {1U, 2U}) {
      std::string text = "before %41 " + std::string(60, 'x');
      text[7 + digit] = byte[0];
      expect_same(text);
    }
  }
}

class Utf8Kernel : public testing::Test {
 protected:
  void SetUp() override {
    if (utf8::avx2_check() == nullptr) {
      GTEST_SKIP() << "this processor has no AVX2";
    }
  }

  static void expect_same(std::string_view text) {
    const Exactly exact(text);
    EXPECT_EQ(utf8::avx2_check()(exact.text()), utf8::is_utf8_portably(text))
        << testing::PrintToString(std::string(text));
  }
};

TEST_F(Utf8Kernel, IsTheSameForAllPairsOfBytes) {
  for (const std::string& first : every_byte()) {
    for (const std::string& second : every_byte()) {
      for (const char* const rest : {"", "\x80", "\x80\x80", "\xBF\xBF\xBF", "a"}) {
        const std::string text = first + second + rest;
        expect_same(text);
        expect_same(std::string(30, 'a') + text);
        expect_same(std::string(31, 'a') + text + std::string(32, 'a'));
      }
    }
  }
}

TEST_F(Utf8Kernel, IsTheSameForCharactersAtTheEdges) {
  const std::vector<std::string> good = {"a",
                                         "\x7F",
                                         "\u0080",
                                         "\u07FF",
                                         "\u0800",
                                         "\uD7FF",
                                         "\uE000",
                                         "\uFFFF",
                                         "é",
                                         "日",
                                         "\U00010000",
                                         "\U0010FFFF",
                                         "sixteen characters and some"};
  std::vector<std::string> bad = good;
  bad.insert(bad.end(),
             {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
              "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\x80", "\xE2\x82", "\xF0\x9F\x98", "\xFF"});
  std::mt19937 random(2);
  for (std::size_t size = 0; size < kMostBytes; ++size) {
    for (int i = 0; i < 40; ++i) {
      expect_same(random_text(random, good, size));
      std::string text = random_text(random, good, size);
      text.insert(random() % (text.size() + 1), bad[random() % bad.size()]);
      expect_same(text);
    }
  }
}

class Base64Kernel : public testing::Test {
 protected:
  void SetUp() override {
    if (base64::avx2() == nullptr) {
      GTEST_SKIP() << "this processor has no AVX2";
    }
  }

  static void expect_same(std::string_view text) {
    const Exactly exact(text);
    EXPECT_EQ(base64::encode_with(base64::avx2(), exact.text()),
              base64::encode_with(nullptr, text));
    EXPECT_EQ(base64::decode_with(base64::avx2(), exact.text()), base64::decode_with(nullptr, text))
        << testing::PrintToString(std::string(text));
  }
};

TEST_F(Base64Kernel, IsTheSameForEveryByteAtEveryPlace) {
  for (const std::string& byte : every_byte()) {
    for (std::size_t at = 0; at < 40; ++at) {
      expect_same(std::string(at, 'Q') + byte + std::string(60, '7'));
    }
  }
}

TEST_F(Base64Kernel, IsTheSameForEveryLength) {
  std::mt19937 random(3);
  for (std::size_t size = 0; size < kMostBytes; ++size) {
    for (int i = 0; i < 40; ++i) {
      const std::string bytes = random_text(random, every_byte(), size);
      expect_same(bytes);
      const std::string digits = base64::encode_with(nullptr, bytes);
      expect_same(digits);
      expect_same(digits + "\n" + digits);
    }
  }
}

}  // namespace
}  // namespace quoll::foundation

#include "quoll/console/base64.h"

#include <gtest/gtest.h>

#include <string>

namespace quoll::console {

namespace {

using foundation::Bytes;

Bytes bytes(std::string_view text) {
  return {text.begin(), text.end()};
}

TEST(ConsoleBase64, IsWrittenAndReadBack) {
  const struct {
    std::string_view bytes;
    std::string_view text;
    std::string_view reason;
  } kRows[] = {
      {"", "", "nothing"},
      {"f", "Zg==", "one byte: two digits and padding"},
      {"fo", "Zm8=", "two bytes"},
      {"foo", "Zm9v", "a whole group"},
      {"foobar", "Zm9vYmFy", "two groups"},
      {"\xFB\xFF\xFE", "+//+", "the last two digits"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(base64(bytes(row.bytes)), row.text) << row.reason;
    EXPECT_EQ(bytes_of_base64(row.text), bytes(row.bytes)) << row.reason;
  }
}

TEST(ConsoleBase64, RefusesEverythingElse) {
  const struct {
    std::string_view text;
    std::string_view reason;
  } kRows[] = {
      {"Zg", "padding is missing"},
      {"Zg=", "half of the padding"},
      {"Zh==", "bits beyond the byte"},
      {"Zm9=", "bits beyond two bytes"},
      {"Zm 9v", "a blank"},
      {"Zm9v\n", "a line break"},
      {"Z===", "a byte has two digits"},
      {"====", "padding of nothing"},
      {"Zm-_", "the URL alphabet"},
      {"Zg==Zg==", "padding in the middle"},
  };
  for (const auto& row : kRows) {
    EXPECT_FALSE(bytes_of_base64(row.text)) << row.reason;
  }
}

}  // namespace

}  // namespace quoll::console

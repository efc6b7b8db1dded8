#include "apps/share/request/clipboard_content.h"

#include <gtest/gtest.h>

namespace quoll::share {
namespace {

using namespace std::string_view_literals;

TEST(ClipboardContent, Texts) {
  struct Row {
    const char* reason;
    std::string_view bytes;
    std::string text;
  };
  const Row rows[] = {
      {"UTF-8", "gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F"},
      {"with a mark", "\xEF\xBB\xBF<b>x</b>", "<b>x</b>"},
      {"UTF-16 with a mark", "\xFF\xFE<\0b\0>\0\xFC\0"sv, "<b>\xC3\xBC"},
      {"the other order", "\xFE\xFF\0<\0b\0>"sv, "<b>"},
      {"UTF-16 without a mark", "<\0b\0>\0"sv, "<b>"},
      {"the other order without a mark", "\0<\0b\0>"sv, "<b>"},
      {"a zero byte at the end", "text\0"sv, "text"},
      {"half a pair of surrogates", "\xFF\xFE\x00\xD8"sv, std::string("\xFF\xFE\x00\xD8", 4)},
      {"an odd length", "\xFF\xFE<"sv, "\xFF\xFE<"},
      {"another encoding", "gr\xFC", "gr\xFC"},
      {"nothing", "", ""},
      {"a mark alone", "\xFF\xFE"sv, ""},
      {"zero bytes", "\0\0"sv, ""},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(clipboard_text(row.bytes), row.text) << row.reason;
  }
}

TEST(ClipboardContent, Lists) {
  using Items = std::vector<std::string>;
  struct Row {
    const char* reason;
    std::string_view text;
    Items items;
  };
  const Row rows[] = {
      {"copied files", "copy\nfile:///a%20b\nfile:///c", {"file:///a%20b", "file:///c"}},
      {"cut files are not moved", "cut\nfile:///a", {"file:///a"}},
      {"a list of URIs",
       "# a comment\r\nfile:///a\r\nhttps://h/?a=b#c\r\n",
       {"file:///a", "https://h/?a=b#c"}},
      {"paths", "copy\n/a b", {"/a b"}},
      {"no list", "just some words\n-\n", {}},
      {"nothing", "", {}},
      {"no file", "copy", {}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(clipboard_items(row.text), row.items) << row.reason;
  }
}

}  // namespace
}  // namespace quoll::share

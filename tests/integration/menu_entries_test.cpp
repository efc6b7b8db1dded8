// The entries of file managers: what their command lines become with names that hold what quotes,
// separates and ends words. Each row does to the line what its file manager does before the line is
// split into words, so a name that breaks it is a menu item that does nothing.
#include <gtest/gtest.h>

#include "quoll/linux/gio/handles.h"

namespace quoll::test {
namespace {

using Texts = std::vector<std::string>;

const char* const kPaths[] = {"/d/a b,c.txt",       "/d/it's.txt",        "/d/say \"q\".txt",
                              "/d/$(id) `id`;.txt", "/d/back\\slash.txt", "/d/50%20.txt",
                              "/d/-n.txt"};

class Entry {
 public:
  Entry(const std::string& file, const char* group) : keys_(g_key_file_new()), group_(group) {
    const std::string path = QUOLL_DESKTOP "/" + file;
    EXPECT_TRUE(g_key_file_load_from_file(keys_.get(), path.c_str(), G_KEY_FILE_NONE, nullptr));
  }
  [[nodiscard]] std::string value(const char* key) const {
    const gio::TextHandle text(g_key_file_get_string(keys_.get(), group_, key, nullptr));
    return text ? text.get() : "";
  }

 private:
  gio::KeyFileHandle keys_;
  const char* group_;
};

std::string uri_of(const char* path) {
  return gio::TextHandle(g_filename_to_uri(path, nullptr, nullptr)).get();
}

std::string quoted(const char* path) {
  return gio::TextHandle(g_shell_quote(path)).get();
}

/// Puts each path as `word` makes it in the place of `code`; nothing without such a place.
template <typename Word>
std::string filled(std::string line, const std::string& code, Word word) {
  const auto place = line.find(code);
  if (place == std::string::npos) {
    return {};
  }
  std::string words;
  for (const char* const path : kPaths) {
    words += (words.empty() ? "" : " ") + word(path);
  }
  return line.replace(place, code.size(), words);
}

Texts split(const std::string& line) {
  int count = 0;
  char** words = nullptr;
  gio::ErrorSlot error;
  if (!g_shell_parse_argv(line.c_str(), &count, &words, error.out())) {
    return {error.message()};
  }
  Texts texts(words, words + count);
  g_strfreev(words);
  return texts;
}

template <typename Word>
Texts expected(Word word) {
  Texts words{"quoll-share", "--notify", "--"};
  for (const char* const path : kPaths) {
    words.push_back(word(path));
  }
  return words;
}

const auto kAsItIs = [](const char* path) { return std::string(path); };

// Nemo puts URIs between the quotes that the entry asks for; an apostrophe is left in them.
TEST(MenuEntries, Nemo) {
  const Entry entry("quoll-share.nemo_action", "Nemo Action");
  const std::string quote = entry.value("Quote") == "double" ? "\"" : "";
  EXPECT_EQ(split(filled(entry.value("Exec"), "%U",
                         [&](const char* path) { return quote + uri_of(path) + quote; })),
            expected(uri_of));
}

// Caja, PCManFM and PCManFM-Qt quote paths for a shell; the last one does not quote URIs.
TEST(MenuEntries, FileManagerAction) {
  const Entry entry("quoll-share.file-manager-action.desktop", "X-Action-Profile files");
  EXPECT_EQ(split(filled(entry.value("Exec"), "%F", quoted)), expected(kAsItIs));
}

// Thunar quotes paths for a shell.
TEST(MenuEntries, SendTo) {
  const Entry entry("quoll-share.send-to.desktop", "Desktop Entry");
  EXPECT_EQ(split(filled(entry.value("Exec"), "%F", quoted)), expected(kAsItIs));
}

// Only to such entries does a launcher give a token, by which the draft's window comes to the
// front.
TEST(MenuEntries, BringATokenAlong) {
  for (const char* const file : {"it.vorlent.quoll2.Quoll-Share.desktop",
                                 "it.vorlent.quoll2.desktop", "quoll-share.send-to.desktop"}) {
    EXPECT_EQ(Entry(file, "Desktop Entry").value("StartupNotify"), "true") << file;
  }
}

}  // namespace
}  // namespace quoll::test

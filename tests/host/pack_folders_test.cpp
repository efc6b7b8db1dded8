#include "apps/share/pack_folders.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/recorders.h"
#include "tests/support/temporary_folder.h"

namespace quoll::share {
namespace {

namespace fs = std::filesystem;

class PackFolders : public testing::Test {
 protected:
  PackFolders() { fs::create_directory(home_.path("photos")); }

  /// Packs with a helper that does this instead.
  Selection pack_with(const std::string& does) {
    const std::string helper = home_.write("helper", "#!/bin/sh\n" + does + "\n");
    EXPECT_EQ(chmod(helper.c_str(), 0755), 0);
    return pack({helper, [this](const std::string& line) { notes_ += line + "\n"; },
                 [this](std::uint64_t bytes) { seen_ = bytes; }});
  }
  Selection pack(const Packing& packing) {
    Selection selection =
        make_selection({{}, {}, {}, {home_.path("photos"), "https://h/"}}, container_.path());
    EXPECT_TRUE(pack_folders(selection, packing));
    return selection;
  }

  test::TemporaryFolder container_;
  test::TemporaryFolder home_;
  std::string notes_;
  std::uint64_t seen_ = 0;
  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
  platform::ScopedDesktop desktop_{{.log = log_}};
};

TEST_F(PackFolders, WhatTheHelperWritesIsTheItem) {
  const Selection selection = pack_with(
      "printf zip; sleep 0.5; printf 'it is a pipe\\tphotos/p\\nno\\033tab\\npacked\\n' >&2");
  ASSERT_EQ(selection.items.size(), 2U);
  EXPECT_FALSE(selection.items[0]->is_folder());
  const auto path =
      foundation::file_system_path(selection.items[0]->value().as<foundation::NSURL>()).value();
  EXPECT_TRUE(path.ends_with("/photos.zip")) << path;
  EXPECT_EQ(test::read_file(path), "zip");
  EXPECT_EQ(note_about_size(selection), std::nullopt);
  EXPECT_EQ(seen_, 3U);
  EXPECT_EQ(notes_, "photos is a folder and is shared as photos.zip\n");
  ASSERT_EQ(selection.left_out.size(), 2U);
  EXPECT_EQ(selection.left_out[0].what, "photos/p");
  EXPECT_EQ(selection.left_out[0].why, "it is a pipe");
  EXPECT_EQ(selection.left_out[1].what, "");
  EXPECT_EQ(selection.left_out[1].why, "no\\x1Btab");
}

TEST_F(PackFolders, AHelperIsBelievedOnlyWhenItSaysThatAllIsPacked) {
  struct Row {
    const char* does;
    const char* why;
  };
  const std::vector<Row> rows{
      {"exit 0", "the helper has ended"},
      {"echo part; exit 0", "the helper has ended"},
      {"echo packed >&2; exit 1", "packed"},
      {"printf 'a\\033b\\nc' >&2; exit 1", "a\\x1Bb"},
      {"kill -9 $$", "the helper has ended"},
      {"head -c 100000 /dev/zero | tr '\\0' x >&2", "the helper was ended"},
  };
  for (const Row& row : rows) {
    const Selection selection = pack_with(row.does);
    EXPECT_EQ(selection.items.size(), 1U) << row.does;
    ASSERT_EQ(selection.left_out.size(), 1U) << row.does;
    EXPECT_EQ(selection.left_out[0].what, home_.path("photos"));
    EXPECT_EQ(selection.left_out[0].why, "it cannot be packed: " + std::string(row.why));
    EXPECT_EQ(log_->lines().back(), "prepare it cannot be packed: the helper says why");
    EXPECT_FALSE(fs::exists(container_.path(".incoming/x/1/photos.zip")));
  }
  const Selection missing =
      pack({"/no/such/helper", [](const std::string&) {}, [](std::uint64_t) {}});
  ASSERT_EQ(missing.left_out.size(), 1U);
  EXPECT_TRUE(missing.left_out[0].why.find("the helper cannot be started: ") != std::string::npos);
}

TEST_F(PackFolders, WithoutAContainerTheFolderIsLeftOut) {
  Selection selection = make_selection({{}, {}, {}, {home_.path("photos")}}, std::nullopt);
  ASSERT_TRUE(pack_folders(selection, {}));
  EXPECT_TRUE(selection.items.empty());
  ASSERT_EQ(selection.left_out.size(), 1U);
  EXPECT_EQ(selection.left_out[0].why, "it cannot be packed: there is no shared folder");
}

}  // namespace
}  // namespace quoll::share

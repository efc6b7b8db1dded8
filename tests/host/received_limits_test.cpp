// How much is taken from standard input, and how.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>

#include "apps/share/request/received_bytes.h"
#include "apps/share/request/selection.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "tests/support/temporary_folder.h"

namespace quoll::share {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

/// A descriptor that delivers this beginning and then zero bytes, so many in all.
posix::UniqueFd delivering(std::string_view beginning, std::size_t size) {
  posix::UniqueFd file(memfd_create("test", MFD_CLOEXEC));
  EXPECT_TRUE(posix::write_all(file.get(), beginning));
  EXPECT_EQ(ftruncate(file.get(), static_cast<off_t>(size)), 0);
  lseek(file.get(), 0, SEEK_SET);
  return file;
}

/// The group container of the shares.
std::string large_container() {
  static const test::TemporaryFolder folder;
  return folder.path();
}

TEST(ReceivedLimits, AnImageIsHeldBelow256MiB) {
  constexpr std::string_view kPng = "\x89PNG\r\n\x1a\n";
  const auto longest = read_beginning({delivering(kPng, 256 * kMebibyte - 1).get()});
  ASSERT_TRUE(longest);
  EXPECT_TRUE(longest->is_whole) << "an image, to be decoded";
  EXPECT_EQ(longest->size, 256 * kMebibyte - 1);
  const auto longer = read_beginning({delivering(kPng, 256 * kMebibyte + 1).get()});
  ASSERT_TRUE(longer);
  EXPECT_FALSE(longer->is_whole) << "shared as the file that it is";
  EXPECT_EQ(longer->size, 256 * kMebibyte);
}

TEST(ReceivedLimits, OfOtherBytesOneMebibyteIsHeld) {
  EXPECT_TRUE(read_beginning({delivering("", kMebibyte - 1).get()})->is_whole);
  const auto longer = read_beginning({delivering("", 100 * kMebibyte).get()});
  EXPECT_FALSE(longer->is_whole);
  EXPECT_EQ(longer->beginning.size(), kMebibyte) << "the rest goes through a block at a time";
}

TEST(ReceivedLimits, ATextHas64MiBAtMost) {
  const auto selected = [](std::size_t size) {
    return make_selection({{}, "-", {}, {}}, large_container(), delivering("text", size).get());
  };
  const Selection longest = selected(64 * kMebibyte);
  ASSERT_TRUE(longest.text);
  EXPECT_EQ(longest.text->size(), 64 * kMebibyte);
  const Selection longer = selected(64 * kMebibyte + 1);
  EXPECT_FALSE(longer.text);
  ASSERT_EQ(longer.left_out.size(), 1U);
  EXPECT_EQ(longer.left_out[0].what, "the text");
  EXPECT_EQ(longer.left_out[0].why, "it is longer than 64 MiB");
}

TEST(ReceivedLimits, ATextWithoutAnEndEnds) {
  const posix::UniqueFd endless(open("/dev/zero", O_RDONLY | O_CLOEXEC));
  EXPECT_FALSE(make_selection({{}, {}, "-", {}}, large_container(), endless.get()).html);
}

TEST(ReceivedLimits, AListHas256MiBAtMost) {
  const auto why_left_out = [](std::size_t size) {
    const posix::UniqueFd list = delivering(std::string(256 * kMebibyte, 'a'), size);
    ShareRequest request;
    request.text = "-";
    request.has_list = true;
    return make_selection(std::move(request), large_container(), list.get()).left_out.front().why;
  };
  EXPECT_EQ(why_left_out(256 * kMebibyte), "it is longer than 64 MiB") << "its only part is a text";
  EXPECT_EQ(why_left_out(256 * kMebibyte + 1), "it is longer than 256 MiB");
}

TEST(ReceivedLimits, DescriptorsHave256MiBInAll) {
  const auto selected = [](std::size_t size) {
    ShareRequest request;
    request.descriptor_items.push_back({delivering("", size), "", "large"});
    return make_selection(std::move(request), large_container());
  };
  EXPECT_EQ(selected(256 * kMebibyte).items.size(), 1U);
  const Selection longer = selected(256 * kMebibyte + 1);
  EXPECT_TRUE(longer.items.empty());
  ASSERT_EQ(longer.left_out.size(), 1U);
  EXPECT_EQ(longer.left_out[0].why, "it is too large, together with the items before it");
}

// One file may be delivered many times, so what each of them has is counted.
TEST(ReceivedLimits, FilesAndImagesShareTheBudgetOfDescriptors) {
  constexpr std::string_view kPng = "\x89PNG\r\n\x1a\n";
  ShareRequest request;
  request.byte_budget = 5 * kMebibyte;
  const auto deliver = [&](std::string_view beginning, std::size_t size, const char* name) {
    request.descriptor_items.push_back({delivering(beginning, size), "", name});
  };
  deliver(kPng, 2 * kMebibyte, "");
  deliver("", 2 * kMebibyte, "file");
  deliver(kPng, 2 * kMebibyte, "");
  deliver("", 2 * kMebibyte, "another");
  deliver("", kMebibyte, "the last that has room");
  deliver(kPng, 100, "");
  const Selection selection = make_selection(std::move(request), large_container());
  EXPECT_EQ(selection.items.size(), 3U);
  ASSERT_EQ(selection.left_out.size(), 3U);
  for (const LeftOut& left : selection.left_out) {
    EXPECT_EQ(left.why, "it is too large, together with the items before it") << left.what;
  }
  std::size_t kept = 0;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(large_container() + "/.incoming")) {
    kept += entry.is_regular_file() ? entry.file_size() : 0;
  }
  EXPECT_EQ(kept, 3 * kMebibyte) << "what is left out takes no room";
}

TEST(ReceivedLimits, OfAnImageNoMoreIsHeldThanIsWanted) {
  constexpr std::string_view kPng = "\x89PNG\r\n\x1a\n";
  const posix::UniqueFd image = delivering(kPng, 100 * kMebibyte);
  EXPECT_EQ(read_beginning({image.get(), std::nullopt, 3 * kMebibyte})->size, 3 * kMebibyte);
}

}  // namespace
}  // namespace quoll::share

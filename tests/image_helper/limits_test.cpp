// What the helper may use, and how large a picture may be.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "apps/image-helper/codecs/picture.h"
#include "apps/sandbox/sanitizer_build.h"
#include "quoll/linux/image_helper/memory_file.h"
#include "tests/support/waiting_helper.h"

namespace quoll::image_helper {
namespace {

TEST(PictureLimits, APictureHas2To28Pixels) {
  EXPECT_NO_THROW(check_size(1U << 14U, 1U << 14U));
  EXPECT_NO_THROW(check_size(1, 1U << 28U));
  EXPECT_THROW(check_size(1, (1U << 28U) + 1), ImageError);
  EXPECT_THROW(check_size((1U << 14U) + 1, 1U << 14U), ImageError);
  EXPECT_THROW(check_size(~0ULL, ~0ULL), ImageError) << "more than a number holds";
  EXPECT_THROW(check_size(0, 1), ImageError);
}

TEST(PictureLimits, OneGibibyteOfPixelsIsHeld) {
  Picture picture;
  picture.channels = 4;
  picture.bits = 16;
  picture.width = 1U << 14U;
  picture.height = (1U << 13U) + 1;
  EXPECT_THROW(HeldPicture{picture}, ImageError) << "one row more";
}

TEST(HelperLimits, AreSetBeforeAnyByteIsRead) {
  const test::WaitingHelper helper(QUOLL_TEST_IMAGE_HELPER);
  EXPECT_EQ(helper.limit(RLIMIT_FSIZE), rlim_t{1} << 30U) << "the longest result";
  EXPECT_EQ(helper.limit(RLIMIT_CPU), 30U);
  EXPECT_EQ(helper.limit(RLIMIT_CORE), 0U);
  if (!sandbox::kSanitizerBuild) {
    EXPECT_EQ(helper.limit(RLIMIT_AS), rlim_t{3} << 30U);
  }
}

}  // namespace
}  // namespace quoll::image_helper

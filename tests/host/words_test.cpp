#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

#include "apps/share/plain_reason.h"
#include "quoll/foundation/error.h"
#include "quoll/foundation/format.h"

namespace quoll::share {
namespace {

TEST(PlainReason, SaysWhatTheSystemSaid) {
  struct Row {
    const char* reason;
    std::string line;
    std::string words;
  };
  const auto line = [](std::string_view operation, const foundation::Error& error) {
    return foundation::format("%@ %@", operation, error);
  };
  using foundation::file_error;
  const std::vector<Row> rows{
      {"a file that may not be read",
       line("Error writing file shareFiles", file_error(EACCES, "/x/a.pdf", true)),
       "permission denied"},
      {"a full disk",
       line("Error writing file shareDatas", file_error(ENOSPC, "/x/image.png", true)),
       "no space left on device"},
      {"a name that pretends to be an error",
       line("Error writing file shareFiles",
            file_error(EROFS, "/Error Domain=NSPOSIXErrorDomain Code=2 \"x\"", true)),
       "read-only file system"},
      {"an error with nothing beneath it",
       "GetItemForExtension kUTTypeURL Error Domain=NSCocoaErrorDomain Code=256 \"It is gone.\"",
       "It is gone."},
      {"quotes in a name",
       "x Error Domain=NSCocoaErrorDomain Code=4 \"a\"b is gone.\" UserInfo={NSFilePath=/a\"b}",
       "a\"b is gone."},
      {"an error without a sentence", "x Error Domain=D Code=7", "D Code=7"},
      {"no error at all", "GetItemForExtension kUTTypeImage the item is not an image",
       "the item is not an image"},
      {"the launcher's words", "openURLs no application answers", "no application answers"},
      {"a line of somebody else", "something else", "something else"},
      {"control characters", "openURLs a\nb", "a\\nb"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(plain_reason(row.line), row.words) << row.reason;
  }
}

TEST(PlainReason, ErrorCode) {
  EXPECT_EQ(error_code(foundation::format("shareInit delete %@",
                                          foundation::file_error(ENOENT, "/x", true))),
            foundation::NSFileNoSuchFileError);
  EXPECT_EQ(error_code("no error"), 0);
}

}  // namespace
}  // namespace quoll::share

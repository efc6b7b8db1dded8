#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

#include "apps/share/result.h"

namespace quoll::share {
namespace {

TEST(PlainReason, SaysWhatTheSystemSaid) {
  struct Row {
    const char* reason;
    platform::LogEvent event;
    std::string words;
  };
  using foundation::Error;
  using foundation::file_error;
  const auto told = [](const Error& error) {
    return platform::LogEvent{"GetItemForExtension kUTTypeURL " + error.description(), error};
  };
  const std::vector<Row> rows{
      {"a file that may not be read", told(file_error(EACCES, "/x/a.pdf", true)),
       "permission denied"},
      {"a full disk", told(file_error(ENOSPC, "/x/image.png", true)), "no space left on device"},
      {"a name that pretends to be an error",
       told(file_error(EROFS, "/Error Domain=NSPOSIXErrorDomain Code=2 \"x\"", true)),
       "read-only file system"},
      {"an error with nothing beneath it", told({"NSCocoaErrorDomain", 256, "It is gone.", {}}),
       "It is gone."},
      {"a number that says nothing", told({"NSPOSIXErrorDomain", 0, "Success", {}}),
       "unknown error"},
      {"an error without a sentence", told({"D", 7, "", {}}), "D Code=7"},
      {"a text that looks like an error",
       {"x Error Domain=NSPOSIXErrorDomain Code=2"},
       "x Error Domain=NSPOSIXErrorDomain Code=2"},
      {"the launcher's words",
       {"openURLs no application answers",
        foundation::quoll_error(foundation::kNotOpenedError, "no application answers")},
       "no application answers"},
      {"a line of somebody else", {"something else"}, "something else"},
      {"control characters", told({"D", 7, "a\nb", {}}), "a\\nb"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(plain_reason(row.event), row.words) << row.reason;
  }
}

}  // namespace
}  // namespace quoll::share

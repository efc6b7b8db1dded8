#include "apps/compose/draft_writing.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "apps/compose/compose_error.h"
#include "apps/compose/folders.h"
#include "apps/compose/writer_result.h"
#include "apps/sandbox/sanitizer_build.h"
#include "tests/compose/taken_folder.h"

namespace quoll::compose {
namespace {

constexpr std::uint64_t kFields = std::uint64_t{100} << 20;

/// A writer that was taken over: it tells of fields that take no room on the disk.
void write_large_fields(int /*taken_folder*/, int output) {
  const std::string message = kMessageBeginning;
  const std::array<std::uint64_t, 3> rest{message.size(), kFields, 0};
  (void)!::write(output, message.data(), message.size());
  lseek(output, static_cast<off_t>(kFields), SEEK_CUR);
  (void)!::write(output, "quolleml", 8);
  (void)!::write(output, rest.data(), sizeof rest);
}

/// What is said when the process has so little memory.
[[noreturn]] void read_with_little_memory(const test::TakenFolder& folder) {
  setenv("XDG_DATA_HOME", folder.around().path().c_str(), 1);
  make_folders();
  auto server = WriterServer::start(write_large_fields);
  const rlimit limit{.rlim_cur = kFields, .rlim_max = kFields};
  setrlimit(RLIMIT_AS, &limit);
  try {
    static_cast<void>(read_fields("20200101-000000", folder.taken(), server));
  } catch (const ComposeError& error) {
    (void)!::write(STDERR_FILENO, error.what(), std::string(error.what()).size());
    server.stop();
    std::_Exit(EXIT_SUCCESS);
  }
  std::_Exit(EXIT_FAILURE);
}

TEST(DraftWriting, FieldsThatNeedTooMuchMemoryAreAFailure) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer needs more address space than any limit leaves";
  }
  const test::TakenFolder folder;
  EXPECT_EXIT(read_with_little_memory(folder), testing::ExitedWithCode(EXIT_SUCCESS),
              "needs more memory than there is");
}

}  // namespace
}  // namespace quoll::compose

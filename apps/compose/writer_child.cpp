#include "apps/compose/writer_child.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <new>
#include <string>
#include <system_error>

#include "apps/compose/noted_sizes.h"
#include "apps/compose/waiting_files.h"
#include "quoll/foundation/exception.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::compose {
namespace {

// The exit status is all that the process says: 0, an `errno` value, or one of these.
constexpr int kNoMemory = 200;
constexpr int kNoCommand = 201;
constexpr int kChanged = 202;
constexpr int kOther = 203;
constexpr int kUsersLimit = 204;

constexpr int kTaken = STDERR_FILENO + 1;
constexpr int kOutput = STDERR_FILENO + 2;

int checked(int descriptor) {
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return descriptor;
}

/// Puts both descriptors into their places, and closes all others but the standard streams.
void hold_only(int taken_folder, int output) {
  const int first = checked(fcntl(taken_folder, F_DUPFD, kOutput + 1));
  const int second = checked(fcntl(output, F_DUPFD, kOutput + 1));
  checked(dup2(first, kTaken));
  checked(dup2(second, kOutput));
  close_range(kOutput + 1, UINT_MAX, 0);
}

std::uint64_t bytes_of_files() {
  std::uint64_t bytes = 0;
  for (const WaitingFile& file : waiting_files(kTaken)) {
    bytes = sum_of(bytes, file.size);
  }
  return bytes;
}

int status_of(WriterServer::Job job, WriterConfinement& confinement, int taken_folder, int output) {
  try {
    hold_only(taken_folder, output);
    confinement.enforce(kTaken, bytes_of_files());
    job(kTaken, kOutput);
    return 0;
  } catch (const std::system_error& error) {
    const int number = error.code().value();
    if (number == EFBIG && confinement.is_file_limit_users()) {
      return kUsersLimit;
    }
    return number > 0 && number < kNoMemory ? number : kOther;
  } catch (const std::bad_alloc&) {
    return kNoMemory;
  } catch (const foundation::NSException&) {
    return kNoCommand;
  } catch (const FileHasChanged&) {
    return kChanged;
  } catch (...) {
    return kOther;
  }
}

WriterAnswer failed(std::string reason) {
  return {.end = WriterEnd::kFailed, .reason = std::move(reason)};
}

WriterAnswer answer_of_exit(int status) {
  switch (status) {
    case 0:
      return {.end = WriterEnd::kWritten, .reason = ""};
    case ENOSPC:
    case EDQUOT:
      return {.end = WriterEnd::kNotNow, .reason = "there is no room for the draft"};
    case EMFILE:
    case ENFILE:
      return {.end = WriterEnd::kNotNow, .reason = "too many files are open to write it"};
    case kUsersLimit:
      return {.end = WriterEnd::kNotNow,
              .reason = "it needs a larger file than the user may have (ulimit -f)"};
    case ENOMEM:
    case kNoMemory:
      return failed("the draft cannot be written: it needs more memory than it may have");
    case kNoCommand:
      return failed("the draft cannot be written: its command cannot be read");
    case kChanged:
      return failed("the draft cannot be written: a file has changed since it was taken");
    case EFBIG:
      return failed("the draft cannot be written: it becomes larger than its files make it");
    case kOther:
      return failed("the draft cannot be written");
    default:
      return failed("the draft cannot be written: " + posix::error_words(status));
  }
}

WriterAnswer answer_of_signal(int number) {
  switch (number) {
    case SIGHUP:
    case SIGINT:
    case SIGQUIT:
    case SIGTERM:
      return {.end = WriterEnd::kStopped, .reason = "the writing of the draft was stopped"};
    case SIGXCPU:
      return failed("the draft cannot be written: it takes too long");
    default:
      return failed("the draft cannot be written: its writer was ended by signal " +
                    std::to_string(number));
  }
}

}  // namespace

void run_writer(WriterServer::Job job, WriterConfinement& confinement, int taken_folder,
                int output) {
  std::_Exit(status_of(job, confinement, taken_folder, output));
}

WriterAnswer answer_of(int status) {
  return WIFSIGNALED(status) ? answer_of_signal(WTERMSIG(status))
                             : answer_of_exit(WEXITSTATUS(status));
}

}  // namespace quoll::compose

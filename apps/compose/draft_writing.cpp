#include "apps/compose/draft_writing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "apps/compose/compose_error.h"
#include "apps/compose/folders.h"
#include "apps/compose/writer_result.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::compose {
namespace {

/// The disk is to blame, and not the draft.
WritingEnd cannot_be_kept() {
  const std::string reason = std::string("it cannot be written: ") + std::strerror(errno);
  return {.answer = {.end = WriterEnd::kNotNow, .reason = reason}, .fields = {}};
}

bool sync(int file) {
  return posix::uninterrupted([&] { return fsync(file); }) == 0;
}

/// Some file systems, as those of networks, know no syncing of folders, and need none.
bool sync_folder(int folder) {
  return sync(folder) || errno == EINVAL || errno == EOPNOTSUPP;
}

/// Gives the file its name. It is on the disk before it has the name, and the name before the
/// folder of what was taken may go.
bool name_file(int file, const std::string& unfinished, const std::string& path) {
  const posix::UniqueFd folder(open(drafts_folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return sync(file) && folder && rename(unfinished.c_str(), path.c_str()) == 0 &&
         sync_folder(folder.get());
}

posix::UniqueFd new_file(const std::string& path) {
  unlink(path.c_str());  // of an attempt that was ended
  return posix::UniqueFd(
      open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
}

WritingEnd write_into(const posix::UniqueFd& file, int folder, WriterServer& writer) {
  // Opened anew: a copy of our own descriptor would hold the lock for as long as the writer lives.
  const posix::UniqueFd taken(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!file || !taken) {
    return cannot_be_kept();
  }
  WritingEnd end{.answer = writer.write(taken.get(), file.get()), .fields = {}};
  if (end.answer.end != WriterEnd::kWritten) {
    return end;
  }
  try {
    end.fields = take_fields(file.get());
  } catch (const ComposeError& wrong) {
    end.answer = {.end = WriterEnd::kFailed, .reason = wrong.what()};
  } catch (const std::bad_alloc&) {
    end.answer = {.end = WriterEnd::kFailed,
                  .reason = "what was written of the draft needs more memory than there is"};
  }
  return end;
}

}  // namespace

WritingEnd write_draft(const TakenDraft& draft, WriterServer& writer) {
  const std::string path = unfinished_message_file(draft.name());
  const posix::UniqueFd file = new_file(path);
  WritingEnd end = write_into(file, draft.folder(), writer);
  if (end.answer.end == WriterEnd::kWritten &&
      !name_file(file.get(), path, message_file(draft.name()))) {
    end = cannot_be_kept();
  }
  if (end.answer.end != WriterEnd::kWritten) {
    unlink(path.c_str());
  }
  return end;
}

DraftFields read_fields(const std::string& name, int folder, WriterServer& writer) {
  const std::string path = unfinished_message_file(name);
  const posix::UniqueFd file = new_file(path);
  unlink(path.c_str());
  WritingEnd end = write_into(file, folder, writer);
  if (end.answer.end != WriterEnd::kWritten) {
    throw ComposeError(end.answer.reason);
  }
  return std::move(end.fields);
}

}  // namespace quoll::compose

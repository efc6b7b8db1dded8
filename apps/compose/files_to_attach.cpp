#include "apps/compose/files_to_attach.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <vector>

#include "apps/compose/compose_error.h"
#include "apps/compose/folders.h"
#include "apps/compose/given_draft.h"
#include "apps/compose/waiting_files.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/gio/show_files.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/remove_item.h"

namespace quoll::compose {
namespace {

[[noreturn]] void cannot_be_laid_out(int error) {
  throw ComposeError("its files cannot be laid out: " + posix::error_words(error));
}

/// Gives a file another name in the folder `target`; with its number, or the next free one, when
/// the name is not free.
void link_file(int folder, const std::string& path, int target, const std::string& name,
               std::size_t number) {
  std::string free = name;
  while (linkat(folder, path.c_str(), target, free.c_str(), 0) != 0) {
    if (errno != EEXIST) {
      cannot_be_laid_out(errno);
    }
    free = std::to_string(++number) + " " + name;
  }
}

}  // namespace

void lay_out_files(int folder, bool with_text) {
  static_cast<void>(posix::remove_item(folder, kToAttach));  // what was laid out before
  if (mkdirat(folder, kToAttach, S_IRWXU) != 0) {
    cannot_be_laid_out(errno);
  }
  const posix::UniqueFd target = posix::open_folder(folder, kToAttach);
  if (!target) {
    cannot_be_laid_out(errno);
  }
  const std::vector<WaitingFile> files = waiting_files(folder);
  for (const WaitingFile& file : files) {
    link_file(folder, path_of(file), target.get(), file.name, file.number);
  }
  if (with_text) {
    link_file(folder, kText, target.get(), kText, files.size());
  }
}

std::string laid_out_files(const std::string& draft) {
  std::string path = given_folder() + "/" + draft + "/" + kToAttach;
  return access(path.c_str(), F_OK) == 0 ? path : "";
}

void show_files(const std::string& draft, const gio::ActivationTokens& tokens) {
  if (laid_out_files(draft).empty()) {
    const posix::UniqueFd folder = posix::open_folder(AT_FDCWD, given_folder() + "/" + draft);
    if (folder) {
      lay_out_files(folder.get(), false);
    }
  }
  const std::string path = laid_out_files(draft);
  std::vector<std::string> names = path.empty() ? std::vector<std::string>() : names_in(path);
  if (names.empty()) {
    throw ComposeError("there are no files of the draft beside its message file",
                       "quoll-compose --open " + draft + " opens that");
  }
  std::ranges::sort(names);
  if (const gio::FailureReason failure = gio::show_files(path, names, tokens)) {
    throw ComposeError(*failure + "; the files lie in " + foundation::printable(path));
  }
}

}  // namespace quoll::compose

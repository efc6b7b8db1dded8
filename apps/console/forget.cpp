#include <filesystem>
#include <iostream>
#include <string>

#include "apps/console/commands.h"
#include "apps/console/output.h"
#include "apps/console/program_desktop.h"
#include "apps/console/staged_copies.h"
#include "apps/share/staging_lock.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/container/staging.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/temporary_item.h"

namespace quoll::console {

int forget(bool as_json) {
  const platform::ScopedDesktop desktop(reading_desktop());
  const auto container = foundation::file_system_path(ExtensionUtilities::GroupPath());
  if (!container) {
    return complain("the shared folder cannot be used; quollctl doctor tells more");
  }
  // A share whose files were not taken yet keeps them.
  const share::StagingLock turn = share::lock_staging(share::staging_lock_holder());
  if (!turn) {
    return complain("the lock of the shares cannot be had; quollctl doctor tells more");
  }
  const StagedCopies before = staged_copies();
  if (!before.trouble.empty()) {  // behind a link are files that no share has put there
    return complain(before.trouble + "; nothing was removed");
  }
  if (std::filesystem::exists(before.folder)) {
    ExtensionUtilities::ShareInit(container::layout::staging);
  }
  posix::sweep_temporary_items(*container);
  const StagedCopies left = staged_copies();
  if (!left.trouble.empty()) {
    return complain(left.trouble);
  }
  if (left.files != 0) {
    return complain(in_words(left) + " cannot be removed from " + left.folder);
  }
  if (as_json) {
    print_json({{"removed", before.files}, {"bytes", before.bytes}});
  } else {
    std::cout << (before.files == 0 ? "there was nothing" : in_words(before) + " removed") << '\n';
  }
  return finish();
}

}  // namespace quoll::console

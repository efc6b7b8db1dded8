#pragma once

#include <ctime>
#include <ostream>
#include <string>
#include <vector>

namespace quoll::compose {

/// A draft of the receiver, in whatever state.
struct ListedDraft {
  std::string path;      ///< its message file, or the folder of what was taken when there is none
  std::timespec time{};  ///< when it was written, or taken
  std::string state;     ///< "waiting", "set aside: REASON", "kept", "perhaps given" or "given"
  bool is_message = false;
};

/// All drafts, the newest last. Changes nothing.
[[nodiscard]] std::vector<ListedDraft> list_drafts();

/// Prints one line: the time, the state, the subject (read from the message file) and the path.
void print_line(std::ostream& out, const ListedDraft& draft);

/// The newest message file. When the newest draft is not written yet, it is waited for, a few
/// seconds. Throws `ComposeError` when there is no message file.
[[nodiscard]] std::string newest_message_file();

}  // namespace quoll::compose

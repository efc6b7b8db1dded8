#pragma once

#include <ctime>
#include <ostream>
#include <string>
#include <vector>

namespace quoll::compose {

/// A draft of the receiver, in whatever state.
struct ListedDraft {
  std::string name;      ///< it never changes
  std::string path;      ///< its message file, or the folder of what was taken when there is none
  std::timespec time{};  ///< when it was written, or taken
  std::string state;  ///< "waiting", "set aside", "kept", "being given", "perhaps given" or "given"
  std::string reason{};  ///< why it was set aside, waits or is kept; empty when that is not known
  bool is_message = false;
  std::string files{};  ///< the folder of its files when it has no message file; empty without any
};

/// All drafts, the newest last. Changes nothing. Throws `ComposeError` when a folder cannot be
/// read.
[[nodiscard]] std::vector<ListedDraft> list_drafts();

/// Prints one line: the name, the time, the state, the subject (read from the message file) and the
/// path.
void print_line(std::ostream& out, const ListedDraft& draft);

/// Prints what can be done, a line for each state that occurs and in which something can.
void print_advice(std::ostream& out, const std::vector<ListedDraft>& drafts);

/// Prints them for programs: a JSON list of objects, as the man page describes them.
void print_json(std::ostream& out, const std::vector<ListedDraft>& drafts);

/// Answers the name of a draft that exists. Throws `ComposeError` when there is none; with
/// `is_written` also when it has no message file.
[[nodiscard]] std::string draft_called(const std::string& name, bool is_written);

/// Deletes a draft, in whatever state, with all that was made of it. Throws `ComposeError`, also
/// when another program works on it.
void delete_draft(const std::string& name);

/// The newest message file. When the newest draft is not written yet, it is waited for, a few
/// seconds. Throws `ComposeError` when there is no message file.
[[nodiscard]] std::string newest_message_file();

}  // namespace quoll::compose

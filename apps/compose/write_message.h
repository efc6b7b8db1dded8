#pragma once

namespace quoll::compose {

/// Makes what a process that writes messages needs, so that it opens no file of the system later:
/// GMime's tables, the types of files, and
/// the reader of HTML. Call it at the beginning, and again after a while.
void prepare_to_write();

/// Writes the draft in an open folder of taken drafts: its `command`, and its `files/K/NAME` in the
/// order of K. What is written to `output`, an empty file, is for `take_fields`. Reads nothing
/// outside the folder, and nothing else is changed.
///
/// Throws `std::system_error` when a file cannot be read or written, `FileHasChanged` when one has
/// not the size that it had when it was taken, and whatever a command that cannot be read raises.
struct FileHasChanged {};
void write_message(int taken_folder, int output);

}  // namespace quoll::compose

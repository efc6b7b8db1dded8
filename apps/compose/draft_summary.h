#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {

/// A size in words, such as "31.2 MB".
[[nodiscard]] std::string size_text(std::int64_t size);

/// The content of a message file, for people.
struct DraftSummary {
  struct Attachment {
    std::string name;
    std::string type;
    std::int64_t size = 0;  ///< in bytes, decoded
  };

  std::string path;
  std::string subject;
  std::string from, to, cc, bcc;
  std::string text;
  std::vector<Attachment> attachments;
};

/// Opens a message file. Throws `ComposeError` when it cannot be read.
[[nodiscard]] posix::UniqueFd open_message(const std::string& path);

/// Confines this process for good to reading what is open, and what lies below the folder unless it
/// is -1. Call it before `read_draft` and `subject_of`: what a stranger wrote is read there.
void confine_reader(int folder);

/// Reads an open message file; `path` is only told. Throws `ComposeError` when it is no message.
[[nodiscard]] DraftSummary read_draft(posix::UniqueFd file, const std::string& path);

/// Prints a summary of a few lines, with only the beginning of a long text. Control characters are
/// written as escapes, so that no draft can control a terminal.
void print_summary(std::ostream& out, const DraftSummary& draft);

/// The subject of a message file, looked for in its first 64 KiB; empty when there is none.
[[nodiscard]] std::string subject_of(const std::string& path);

}  // namespace quoll::compose

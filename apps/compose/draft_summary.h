#pragma once

#include <cstdint>
#include <ctime>
#include <ostream>
#include <string>
#include <vector>

#include "apps/compose/taken_files.h"

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

/// Reads a message file. Throws `CannotCompose` when it cannot be read or is not a message.
[[nodiscard]] DraftSummary read_draft(const std::string& path);

/// Prints a summary of a few lines, with only the beginning of a long text. Control characters are
/// written as escapes, so that no draft can control a terminal.
void print_summary(std::ostream& out, const DraftSummary& draft,
                   const std::vector<LeftOut>& left_out);

/// A draft in the drafts folder.
struct KeptDraft {
  std::string path;
  std::timespec time{};  ///< when it was written
};

/// All drafts in the folder, the newest last.
[[nodiscard]] std::vector<KeptDraft> kept_drafts();

/// Prints one line: when the draft was written, its subject (read from the file) and its path.
void print_line(std::ostream& out, const KeptDraft& draft);

}  // namespace quoll::compose

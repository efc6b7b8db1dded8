#pragma once

#include <cstdint>
#include <ctime>
#include <ostream>
#include <string>
#include <vector>

#include "apps/compose/taken_files.h"

namespace quoll::compose {

/// A size for people: "31.2 MB".
[[nodiscard]] std::string size_text(std::int64_t size);

/// What a message file holds, for people.
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

/// Reads a message file. Throws `CannotCompose` when it cannot be read or is no message.
[[nodiscard]] DraftSummary read_draft(const std::string& path);

/// Writes a summary of a few lines; of a long text only the beginning. Control characters are
/// written as escapes, so nothing in a draft can command a terminal.
void print_summary(std::ostream& out, const DraftSummary& draft,
                   const std::vector<LeftOut>& left_out);

/// A draft that is kept.
struct KeptDraft {
  std::string path;
  std::timespec time{};  ///< when it was written
};

/// All kept drafts, the newest last.
[[nodiscard]] std::vector<KeptDraft> kept_drafts();

/// One line: when it was written, its subject (read from the file) and its path.
void print_line(std::ostream& out, const KeptDraft& draft);

}  // namespace quoll::compose

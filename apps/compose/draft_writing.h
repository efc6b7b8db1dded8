#pragma once

#include <string>

#include "apps/compose/draft_fields.h"
#include "apps/compose/taken_draft.h"
#include "apps/compose/writer_server.h"

namespace quoll::compose {

/// How an attempt to write a draft has ended.
struct WritingEnd {
  WriterAnswer answer;
  DraftFields fields;  ///< when it was written
};

/// Has the writer write the message file of a draft, checks what came of it, and gives it its name
/// when it is on the disk to stay. Another file of that name, of an earlier attempt, is replaced.
/// Unless it was written, nothing is left.
[[nodiscard]] WritingEnd write_draft(const TakenDraft& draft, WriterServer& writer);

/// What a client is told of a draft whose command and files lie in this folder. Nothing is kept of
/// the message file that is written for it. `name` is the draft's. Throws `ComposeError`.
[[nodiscard]] DraftFields read_fields(const std::string& name, int folder, WriterServer& writer);

}  // namespace quoll::compose

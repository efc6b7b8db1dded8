#pragma once

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

}  // namespace quoll::compose

#pragma once

#include <optional>
#include <string>

#include "apps/quoll-compose/received_draft.h"

namespace quoll::receiver {

/// What a person is told who sees no terminal: one line, and lines of plain text below it.
struct Notice {
  std::string summary;
  std::string body;
};

/// What there is to say of a draft: what is not in it, that no mail client has it, what else a
/// person should know. None when all is as it should be.
[[nodiscard]] std::optional<Notice> notice_of(const FinishedDraft& draft);

}  // namespace quoll::receiver

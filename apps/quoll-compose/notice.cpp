#include "apps/quoll-compose/notice.h"

#include <cstddef>

#include "quoll/foundation/printable.h"

namespace quoll::receiver {

std::optional<Notice> notice_of(const FinishedDraft& draft) {
  constexpr std::size_t kMostFiles = 5;
  constexpr std::size_t kLongestName = 120;
  const HandedOver& handed = draft.handed_over;
  const bool is_kept = !handed.is_given && !handed.sentence.empty();
  std::string body;
  const auto add = [&](const std::string& line) { body += (body.empty() ? "" : "\n") + line; };
  const auto& left_out = draft.left_out;
  for (std::size_t at = 0; at < left_out.size() && at < kMostFiles; ++at) {
    add("Left out: " + foundation::printable(left_out[at].name, kLongestName) + ": " +
        left_out[at].reason);
  }
  if (left_out.size() > kMostFiles) {
    add("Left out: " + std::to_string(left_out.size() - kMostFiles) + " more");
  }
  if (is_kept) {
    add("The draft " + handed.sentence + ".");
    add(foundation::printable(draft.path));
  }
  for (const auto& note : draft.notes) {
    add(note);
  }
  if (body.empty()) {
    return std::nullopt;
  }
  const char* const otherwise = is_kept ? "The draft is kept" : "A draft was made";
  return Notice{.summary = left_out.empty() ? otherwise : "Not everything is in the draft",
                .body = body};
}

}  // namespace quoll::receiver

#include "apps/compose/outcome.h"

#include "apps/compose/compose_error.h"
#include "quoll/foundation/printable.h"
#include "quoll/platform/log.h"

namespace quoll::compose {

std::string Note::sentence() const {
  return with_advice(text, advice) + ".";
}

std::string Outcome::sentence() const {
  switch (state) {
    case State::kGiven:
      return "was given to " + foundation::printable(client);
    case State::kKept:
      return "is kept: " + with_advice(reason, advice);
    case State::kWaits:
    case State::kStopped:
      return "waits: " + reason;
    case State::kSetAside:
      break;
  }
  return "was set aside: " + reason;
}

void log_outcome(const Outcome& outcome) {
  for (const auto& note : outcome.notes) {
    platform::log("%@", note.sentence());
  }
  platform::log("draft %@ %@", outcome.path, outcome.sentence());
}

}  // namespace quoll::compose

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/share/exit_code.h"
#include "apps/share/request/selection.h"
#include "quoll/platform/log.h"
#include "quoll/recording/event.h"

namespace quoll::share {

/// One thing of a share.
struct SharedThing {
  std::string kind;         ///< "file", "image", "link", "text" or "HTML"
  std::string given;        ///< as it was given; empty for a text
  std::uint64_t bytes = 0;  ///< of the staged file, or of the text; 0 when nothing was staged
};

/// What came of a share.
struct ShareResult {
  bool is_opened = false;
  /// The identifier of the application that was to open the command, or where it was printed; empty
  /// when none was asked.
  std::string application;
  /// Where the application will keep the draft, which it may still have to write; empty when it
  /// does not say.
  std::string draft;
  /// What is in the draft; of a share that was not opened, what would have been.
  std::vector<SharedThing> shared;
  std::vector<LeftOut> left_out;
  /// Why the shared folder could not be prepared, and what to do; none when it could.
  std::optional<std::string> folder_trouble;
  /// Why the command was not opened, in words that follow a colon; empty when it was opened.
  std::string failure;
  /// What to do about it; empty when it was opened.
  std::string advice;
  /// The reason for the system log, when `failure` may hold another program's words.
  std::string logged_as;
  /// True when a line of the system log has told it before.
  bool is_failure_logged = false;

  [[nodiscard]] ExitCode code() const;
};

/// What the selection and the events of the share tell. `events` are without those of the items.
[[nodiscard]] ShareResult result_of(const Selection& selection,
                                    const std::vector<recording::Event>& events);

/// The advice for a share of which nothing is left; there is a line for each reason.
inline constexpr const char* kSeeReasons = "see to the reasons above and share again";
inline constexpr const char* kTryDoctor = "quollctl doctor tells more";

/// A share that ended early, for this reason.
[[nodiscard]] ShareResult failed_share(std::string reason, std::string advice = kTryDoctor);

/// An event of the log in words for people: of its error only the innermost cause ("permission
/// denied"), without an error the event's text. One line, ready for a terminal.
[[nodiscard]] std::string plain_reason(const platform::LogEvent& event);

}  // namespace quoll::share

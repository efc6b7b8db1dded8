#pragma once

#include <cstdint>
#include <string>

#include "apps/compose/taken_files.h"

namespace quoll::compose {

/// The files of one draft that a mail client reads, in a folder of their own, `<given>/<the draft's
/// name>`, which only the user can read. They stay, because a client may read them as late as when
/// the message is sent.
class GivenDraft {
 public:
  /// Makes the folder. Throws `CannotCompose`, as the other operations do.
  explicit GivenDraft(const std::string& draft);

  /// Moves a file into the folder under exactly this name and answers its path.
  std::string add(const TakenFile& file, const std::string& name);
  /// Writes a text into a file, with a line end at its end, and answers the path.
  [[nodiscard]] std::string add_text(const std::string& text) const;
  /// Copies the draft to another folder, which is made if it is missing, and answers the copy's
  /// path. The copy is removed when the draft is. Call it at most once for a draft.
  [[nodiscard]] std::string copy_to(const std::string& folder) const;

  /// Notes that a client has the draft since now. Without this note the draft counts as the only
  /// copy and is never removed, so a failure does no harm.
  void mark() const noexcept;

 private:
  std::string draft_;
  std::string folder_;
  unsigned files_ = 0;
};

/// A moment, by the clock that can be set and by the one that cannot.
struct Moment {
  std::int64_t time = 0;        ///< seconds since 1970
  std::string boot;             ///< identifies the start of the system
  std::int64_t since_boot = 0;  ///< in seconds, including sleep
};
[[nodiscard]] Moment present_moment();

/// Removes the drafts that were given to a client 7 days ago or earlier, with everything that was
/// made for the client. It also removes folders of that age whose draft was never given; those
/// drafts stay. While the system runs, setting the clock changes nothing. Call it while no program
/// works on a draft.
void clean_given_drafts(const Moment& now);

}  // namespace quoll::compose

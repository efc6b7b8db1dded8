#pragma once

#include <cstdint>
#include <string>

#include "apps/compose/taken_files.h"

namespace quoll::compose {

/// What a mail client reads of one draft: a folder of its own, `<given>/<the draft's name>`, for
/// the user alone. It stays, as a client may read it as late as when the message is sent.
class GivenDraft {
 public:
  /// Makes the folder. Throws `CannotCompose`, as the other calls do.
  explicit GivenDraft(const std::string& draft);

  /// Moves a file in, under this name exactly, and answers its path.
  std::string add(const TakenFile& file, const std::string& name);
  /// Writes a text into a file, whose last line ends, and answers its path.
  [[nodiscard]] std::string add_text(const std::string& text) const;
  /// Copies the draft into a folder elsewhere, made when it is missing, and answers the copy's
  /// path. The copy is cleaned with the draft. Once a draft.
  [[nodiscard]] std::string copy_to(const std::string& folder) const;

  /// Says that a client has the draft, from now on. Without this the draft is the only copy and is
  /// kept for good, so a failure is no harm.
  void mark() const noexcept;

 private:
  std::string draft_;
  std::string folder_;
  unsigned files_ = 0;
};

/// A moment by the clock that people set, and by the one that nobody can.
struct Moment {
  std::int64_t time = 0;        ///< seconds since 1970
  std::string boot;             ///< which start of the system it is in
  std::int64_t since_boot = 0;  ///< seconds, sleep included
};
[[nodiscard]] Moment present_moment();

/// Removes the drafts that a client was given 7 days ago or earlier, with all that was made for the
/// client, and folders of that age that no client was given; the drafts of these stay. While the
/// system runs without a restart, a clock that is set changes nothing. Called while no draft is
/// under way in any program.
void clean_given_drafts(const Moment& now);

}  // namespace quoll::compose

#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "apps/compose/moment.h"
#include "apps/compose/taken_draft.h"

namespace quoll::compose {

/// Names in the folder of a draft: its plain text, and the folder of what a person attaches by
/// hand.
inline constexpr const char* kText = "text.txt";
inline constexpr const char* kToAttach = "to-attach";

/// What a mail client is given of one draft: the folder `given/NAME`, which only the user can read.
/// It stays, because a client may read the files as late as when the message is sent. It is locked
/// while this object lives. The operations throw `ComposeError`.
class GivenDraft {
 public:
  /// Moves the taken draft to the folder. From then on it is never offered by itself again: until
  /// `mark` or `take_back`, it was perhaps given.
  explicit GivenDraft(TakenDraft& taken);

  /// Opens the folder of a written draft, or makes one, to offer the draft to a client once more.
  /// Throws `ComposeError`, also when another program works on the draft.
  [[nodiscard]] static GivenDraft again(const std::string& draft);

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] int folder() const { return folder_.get(); }
  /// False when `remove_files` was called for this draft, or its files went after 7 days.
  [[nodiscard]] bool has_files() const;

  /// Where a file of this name will be that the draft had as its K-th, and the draft's text.
  [[nodiscard]] static std::string file_path(const std::string& draft, std::size_t k,
                                             const std::string& name);
  [[nodiscard]] static std::string text_path(const std::string& draft);

  /// Gives each file its name; nothing else of it is changed.
  void name_files(const std::vector<std::string>& names) const;
  /// Removes the command and the files, which are in the message file too.
  void remove_files() const;
  /// Writes the draft's text, with a line end at its end.
  void add_text(const std::string& text) const;
  /// Copies the message file to where the snap with this name can read it, and answers the copy's
  /// path. The copy is removed when the draft is. A copy of before is replaced.
  [[nodiscard]] std::string copy_message_for(const std::string& snap) const;

  /// Notes that a client has the draft since now. Without this note the draft counts as the only
  /// copy and is never removed, so a failure does no harm.
  void mark() const noexcept;
  /// Notes that no client has taken it, unless an earlier one perhaps has.
  void take_back() const noexcept;

 private:
  GivenDraft(std::string name, posix::UniqueFd folder, bool was_offered)
      : name_(std::move(name)), folder_(std::move(folder)), was_offered_(was_offered) {}

  std::string name_;
  posix::UniqueFd folder_;
  bool was_offered_ = false;
};

/// What is known of a written draft.
enum class Giving {
  kNone,     ///< no client has it
  kNow,      ///< a program offers it to a client at this moment
  kPerhaps,  ///< it was offered to a client, and the end was not seen
  kGiven,
};
/// Has the draft's lock for a moment when it may be `kNow`.
[[nodiscard]] Giving giving_of(const std::string& draft);

/// Removes a written draft with everything that was made for its clients. Throws `ComposeError`
/// when another program works on it.
void remove_written(const std::string& draft);

/// Removes the drafts that were last given or offered to a client 7 days ago or earlier, with
/// everything that was made for the client. Of a draft that no client is known to have, it removes
/// what was made that long ago; the draft stays, also the note that it was perhaps given. What a
/// program works on stays.
void sweep_given(const Moment& now);

}  // namespace quoll::compose

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/compose/compose_command.h"
#include "apps/compose/hand_over.h"
#include "apps/compose/taken_files.h"
#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {

/// A compose command that was taken. Its files belong to the receiver, there is room for the draft,
/// and a program that lists the drafts waits for this one.
///
/// A draft with files but without a subject gets one that names them: "report.pdf and 2 more".
class ReceivedDraft {
 public:
  /// Takes the command URL and its files. Throws `CannotCompose`.
  explicit ReceivedDraft(std::string_view url);

  /// Writes the draft and answers its path. Throws `CannotCompose`.
  [[nodiscard]] std::string write() const;
  /// Prepares the written draft for the user's mail client. The files are moved to the client's
  /// folder.
  [[nodiscard]] HandOver hand_over(const std::string& path) const;
  [[nodiscard]] const std::vector<LeftOut>& left_out() const { return files_.left_out(); }

 private:
  ComposeCommand command_;
  posix::UniqueFd under_way_;  // before `files_`: released after them
  TakenFiles files_;
};

/// A draft that was written, and what became of it.
struct FinishedDraft {
  std::string path;
  std::vector<LeftOut> left_out;
  HandedOver handed_over;
  std::vector<std::string> notes;  ///< sentences about what else the user should know
};

/// A draft that was written and is ready for the user's mail client.
struct WrittenDraft {
  FinishedDraft draft;
  HandOver hand_over;
};

/// Writes the draft. What was left out is logged. Throws `CannotCompose`.
[[nodiscard]] WrittenDraft write(std::unique_ptr<ReceivedDraft> received);

/// Gives the draft to the mail client, which may come to the front by these tokens, and waits for a
/// moment to see that it does not fail at once. Logs where the draft is.
[[nodiscard]] FinishedDraft hand_over(WrittenDraft written, const gio::ActivationTokens& tokens);

/// Does both: `write`, then `hand_over`.
[[nodiscard]] FinishedDraft finish(std::unique_ptr<ReceivedDraft> received,
                                   const gio::ActivationTokens& tokens);

}  // namespace quoll::compose

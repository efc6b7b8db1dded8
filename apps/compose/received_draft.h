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

/// A compose command that was taken: its files are the receiver's own, there is room for the draft,
/// and whoever looks at the drafts waits for it.
///
/// A draft with files but no subject gets one that names them, "report.pdf and 2 more".
class ReceivedDraft {
 public:
  /// Throws `CannotCompose`.
  explicit ReceivedDraft(std::string_view url);

  /// Writes the draft and answers its path. Throws `CannotCompose`.
  [[nodiscard]] std::string write() const;
  /// Makes the written draft ready for the user's mail client; the files go there.
  [[nodiscard]] HandOver hand_over(const std::string& path) const;
  [[nodiscard]] const std::vector<LeftOut>& left_out() const { return files_.left_out(); }

 private:
  ComposeCommand command_;
  posix::UniqueFd under_way_;  // outlives the files
  TakenFiles files_;
};

/// A draft that was written, and what became of it.
struct FinishedDraft {
  std::string path;
  std::vector<LeftOut> left_out;
  HandedOver handed_over;
  std::vector<std::string> notes;  ///< sentences: what else a person should know
};

/// A draft that was written and is ready for the user's mail client.
struct WrittenDraft {
  FinishedDraft draft;
  HandOver hand_over;
};

/// Writes the draft. The log says what was left out. Throws `CannotCompose`.
[[nodiscard]] WrittenDraft write(std::unique_ptr<ReceivedDraft> received);

/// Hands it to the mail client, which may come to the front by these tokens, and waits for a moment
/// to see that the client does not fail at once. The log says where the draft is.
[[nodiscard]] FinishedDraft hand_over(WrittenDraft written, const gio::ActivationTokens& tokens);

/// Both.
[[nodiscard]] FinishedDraft finish(std::unique_ptr<ReceivedDraft> received,
                                   const gio::ActivationTokens& tokens);

}  // namespace quoll::compose

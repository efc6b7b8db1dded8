#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/quoll-compose/compose_command.h"
#include "apps/quoll-compose/taken_files.h"
#include "linux/gio/activation_tokens.h"
#include "linux/posix/unique_fd.h"

namespace quoll::receiver {

/// A compose command that was taken: its files are the receiver's own, there is room for the draft,
/// and whoever looks at the drafts waits for it.
class ReceivedDraft {
 public:
  /// Throws `CannotCompose`.
  explicit ReceivedDraft(std::string_view url);

  /// Writes the draft and answers its path. Throws `CannotCompose`.
  [[nodiscard]] std::string write() const;
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
  std::string handed_over;  ///< a sentence; empty without a desktop
};

/// Writes the draft and hands it to the user's mail client, which may come to the front by these
/// tokens. The log says what was left out and where the draft is. Throws `CannotCompose`.
[[nodiscard]] FinishedDraft finish(std::unique_ptr<ReceivedDraft> received,
                                   const gio::ActivationTokens& tokens);

}  // namespace quoll::receiver

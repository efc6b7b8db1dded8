#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/compose/client_arguments.h"
#include "apps/compose/given_drafts.h"
#include "apps/compose/taken_files.h"
#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/gio/mail_clients.h"
#include "quoll/message/extension_message.h"

namespace quoll::compose {

/// True when there is a desktop to show windows on.
[[nodiscard]] bool has_desktop();

/// What became of a draft.
struct HandedOver {
  bool is_given = false;
  std::string sentence;  ///< "was given to NAME" or "is kept: REASON"; empty without a desktop
  std::string reason;    ///< why it is kept and what to do; empty when it was given
  std::string note;      ///< what else the user should know; usually empty
};

/// Gives one draft to the user's mail client, in the way that the client takes drafts.
class HandOver {
 public:
  /// Chooses the client and makes the files that it will read; `files` are not needed any more
  /// afterwards. Without a desktop there is no client.
  HandOver(const std::string& draft, const ExtensionMessage& message,
           const std::vector<TakenFile>& files);

  /// Starts the client, and waits for a moment: a client that ends at once with an error has not
  /// taken the draft. The draft stays in any case. If the client was seen to run or to end without
  /// an error, the draft is marked as given, and is removed one day. A client in a terminal cannot
  /// be seen.
  [[nodiscard]] HandedOver run(const gio::ActivationTokens& tokens);

 private:
  void lay_out(const ExtensionMessage& message, const std::vector<TakenFile>& files);
  void lay_out_file();
  [[nodiscard]] gio::FailureReason start();

  std::string draft_;
  bool has_desktop_;
  gio::ChosenMailClient chosen_;
  gio::FailureReason failure_;
  gio::ProgramStart start_;
  std::optional<GivenDraft> given_;
};

}  // namespace quoll::compose

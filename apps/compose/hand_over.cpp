#include "apps/compose/hand_over.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <utility>

#include "apps/compose/client_arguments.h"
#include "apps/compose/compose_error.h"
#include "apps/compose/draft_summary.h"
#include "apps/compose/folders.h"
#include "apps/compose/given_draft.h"
#include "apps/compose/waiting_files.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/gio/mail_clients.h"
#include "quoll/linux/posix/subprocess.h"

namespace quoll::compose {
namespace {

using gio::DraftWay;
using gio::MailClient;

bool is_set(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

std::string uri_of(const std::string& path) {
  const gio::TextHandle uri(g_filename_to_uri(path.c_str(), nullptr, nullptr));
  return uri.get();  // never null: the path is absolute
}

// A snap can read its own folder in the home, and no hidden folder outside it.
std::string folder_of_snap(const std::string& name) {
  return std::string(g_get_home_dir()) + "/snap/" + name + "/common/quoll-compose";
}

/// The chosen client, when it can be given drafts at all.
const MailClient& client_for_drafts(const gio::ChosenMailClient& chosen) {
  if (!chosen.client) {
    throw ComposeError(
        "no mail client is chosen for mail links; quoll-compose --clients lists those there are");
  }
  const MailClient& client = *chosen.client;
  if (client.way == DraftWay::kNone) {
    throw ComposeError(client.name + " cannot be given a draft, so open or import the file there");
  }
  return client;
}

/// Names for the files of a draft that the client takes by its command line.
std::vector<std::string> names_for(const MailClient& client, const TakenDraft& draft) {
  std::vector<std::string> names;
  for (const WaitingFile& file : waiting_files(draft.folder())) {
    names.push_back(name_for_client(client.way, file.name));
  }
  return names;
}

/// The client's arguments, with the paths that the files will have.
std::vector<std::string> arguments_for(const MailClient& client, const std::string& draft,
                                       const DraftFields& fields,
                                       const std::vector<std::string>& names) {
  ClientFiles files{.text = GivenDraft::text_path(draft), .attachments = {}};
  for (std::size_t k = 0; k < names.size(); ++k) {
    files.attachments.push_back(GivenDraft::file_path(draft, k, names[k]));
  }
  if (!client.reads_files() && reads_files(client.way, fields, files)) {
    throw ComposeError(client.name +
                       " runs in a sandbox and cannot read the attachments, so open or import the "
                       "file there");
  }
  std::vector<std::string> arguments = client_arguments(client.way, fields, files);
  if (!std::ranges::all_of(arguments, foundation::is_utf8)) {
    throw ComposeError("a path that is not UTF-8 cannot be told to " + client.name +
                       ", so open or import the file there");
  }
  if (!are_startable(arguments)) {
    throw ComposeError("it is too long for " + client.name +
                       ", which takes 131071 bytes, so open or import the file there");
  }
  return arguments;
}

/// Why a client that was started has ended at once; none when it runs, or ended without an error.
gio::FailureReason failure_at_once(pid_t process, const std::string& name, bool& is_seen) {
  constexpr std::chrono::milliseconds kAtOnce{3000};
  const int trouble = posix::wait_for_end(process, std::chrono::steady_clock::now() + kAtOnce);
  if (trouble != 0) {
    is_seen = trouble == ETIMEDOUT;
    return std::nullopt;
  }
  const auto status = posix::reap(process);
  is_seen = status.has_value();
  if (status.value_or(0) == 0) {
    return std::nullopt;
  }
  return name + " ended at once, " +
         (WIFEXITED(*status) ? "with status " + std::to_string(WEXITSTATUS(*status))
                             : "by signal " + std::to_string(WTERMSIG(*status))) +
         "; open or import the file there";
}

/// Starts the client and marks the draft as given when that was seen; throws when it has not taken
/// the draft.
void start(const MailClient& client, const gio::ProgramStart& with, const GivenDraft& given) {
  pid_t process = 0;
  bool is_seen = false;
  gio::FailureReason failure = gio::start_program(client.entry.get(), with, &process);
  if (!failure && process != 0) {
    failure = failure_at_once(process, client.name, is_seen);
  }
  if (failure) {
    throw ComposeError(*failure);
  }
  // The last step: a draft that may not have arrived must never be removed.
  if (is_seen && !client.is_in_terminal) {
    given.mark();
  }
}

/// What is done once the draft lies in the folder of what clients are given.
template <typename Prepare>
void offer(TakenDraft& draft, const MailClient& client, gio::ProgramStart with, Prepare prepare) {
  const GivenDraft given(draft);
  try {
    prepare(given, with);
    start(client, with, given);
  } catch (...) {
    given.take_back();
    throw;
  }
}

void give_message_file(TakenDraft& draft, const MailClient& client, gio::ProgramStart with) {
  if (!client.reads_files()) {
    throw ComposeError(client.name +
                       " runs in a sandbox and cannot read the draft, so copy it to where " +
                       client.name + " can and open it there");
  }
  const std::string message = message_file(draft.name());
  offer(draft, client, std::move(with), [&](const GivenDraft& given, gio::ProgramStart& start) {
    given.remove_files();
    const std::string& snap = client.sandbox.snap;
    start.uris = {uri_of(snap.empty() ? message : given.copy_message_to(folder_of_snap(snap)))};
  });
}

void give_arguments(TakenDraft& draft, const DraftFields& fields, const MailClient& client,
                    gio::ProgramStart with) {
  const std::vector<std::string> names = names_for(client, draft);
  with.arguments = arguments_for(client, draft.name(), fields, names);
  offer(draft, client, std::move(with), [&](const GivenDraft& given, gio::ProgramStart&) {
    given.name_files(names);
    given.add_text(fields.text);
  });
}

// A warning when the draft is too large. The size is that of the message file, which is what will
// be sent.
void note_size(Outcome& outcome) {
  constexpr off_t kMostThatTravels = 25'000'000;
  struct stat status {};
  if (stat(outcome.path.c_str(), &status) == 0 && status.st_size > kMostThatTravels) {
    outcome.notes.push_back("The draft has " + size_text(status.st_size) +
                            ", and many mail servers refuse more than 25 MB.");
  }
}

Outcome written(const TakenDraft& draft) {
  Outcome outcome;
  outcome.path = message_file(draft.name());
  outcome.left_out = draft.left_out();
  note_size(outcome);
  return outcome;
}

}  // namespace

bool has_desktop() {
  return is_set("DISPLAY") || is_set("WAYLAND_DISPLAY");
}

Outcome keep(TakenDraft draft, const std::string& reason) {
  Outcome outcome = written(draft);
  outcome.reason = reason;
  draft.remove();
  return outcome;
}

Outcome hand_over(TakenDraft draft, const DraftFields& fields,
                  const gio::ActivationTokens& tokens) {
  if (!has_desktop()) {
    return keep(std::move(draft), "");
  }
  Outcome outcome = written(draft);
  const gio::ChosenMailClient chosen = gio::chosen_mail_client();
  if (!chosen.gone.empty()) {
    outcome.notes.push_back(
        "The chosen mail client " + foundation::printable(chosen.gone) +
        " is not there any more; quoll-compose --clients lists those that are.");
  }
  const gio::ProgramStart with{.uris = {}, .arguments = {}, .tokens = tokens};
  try {
    const MailClient& client = client_for_drafts(chosen);
    if (client.way == DraftWay::kMessageFile) {
      give_message_file(draft, client, with);
    } else {
      give_arguments(draft, fields, client, with);
    }
    outcome.state = Outcome::State::kGiven;
    outcome.client = client.name;
  } catch (const std::exception& reason) {
    outcome.reason = foundation::printable(reason.what());
    draft.remove();  // nothing is there when it was offered
  }
  return outcome;
}

}  // namespace quoll::compose

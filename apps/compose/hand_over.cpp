#include "apps/compose/hand_over.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include "apps/compose/client_arguments.h"
#include "apps/compose/client_choice.h"
#include "apps/compose/compose_error.h"
#include "apps/compose/draft_summary.h"
#include "apps/compose/draft_writing.h"
#include "apps/compose/files_to_attach.h"
#include "apps/compose/folders.h"
#include "apps/compose/given_draft.h"
#include "apps/compose/noted_reason.h"
#include "apps/compose/waiting_files.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/gio/mail_clients.h"
#include "quoll/linux/gio/program_chooser.h"
#include "quoll/linux/posix/descriptor_io.h"
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

/// The chosen client, when it can be given drafts at all.
const MailClient& client_for_drafts(const gio::ChosenMailClient& chosen) {
  if (!chosen.client) {
    throw ComposeError("no mail client is chosen for mail links",
                       "quoll-compose --clients lists those there are");
  }
  const MailClient& client = *chosen.client;
  if (client.way == DraftWay::kNone) {
    throw ComposeError(client.name + " cannot be given a draft, so open or import the file there");
  }
  return client;
}

/// Names for the files of a draft that the client takes by its command line.
std::vector<std::string> names_for(const MailClient& client, int folder) {
  std::vector<std::string> names;
  for (const WaitingFile& file : waiting_files(folder)) {
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

/// Starts the client, and answers whether it was seen to run; throws when it has not taken the
/// draft.
bool start(const MailClient& client, const gio::ProgramStart& with) {
  pid_t process = 0;
  bool is_seen = false;
  gio::FailureReason failure = gio::start_program(client.entry.get(), with, &process);
  if (!failure && process != 0) {
    failure = failure_at_once(process, client.name, is_seen);
  }
  if (failure) {
    throw ComposeError(*failure);
  }
  return is_seen && !client.is_in_terminal;
}

/// What a mail link cannot carry to the client, as a reason to keep the draft; empty when it has
/// everything.
std::string not_carried(const MailClient& client, const DraftFields& fields, std::size_t files) {
  if (client.way != DraftWay::kMailLink) {
    return "";
  }
  std::string lacking;
  if (is_text_too_long(client.way, fields)) {
    lacking = "its text (too long for a mail link)";
  }
  if (files != 0) {
    lacking += (lacking.empty() ? "" : " and ") +
               (files == 1 ? "its file" : "its " + std::to_string(files) + " files") +
               " (a mail link carries none)";
  }
  return lacking.empty() ? "" : client.name + " has it without " + lacking;
}

/// What is done once the draft lies in the folder of what clients are given. `prepare` answers why
/// the draft is kept although the client was started; an empty text when it has everything.
template <typename Prepare>
void offer(const GivenDraft& given, const MailClient& client, gio::ProgramStart with,
           Prepare prepare) {
  try {
    const std::string rest = prepare(with);
    const bool has_it = start(client, with);
    if (!rest.empty()) {
      throw ComposeError(rest, "quoll-compose --files " + given.name() + " shows them");
    }
    if (has_it) {
      given.mark();  // the last step: a draft that may not have arrived must never be removed
    }
  } catch (const std::exception& failure) {
    given.take_back();
    note_reason(given_folder() + "/" + given.name(), foundation::printable(reason_in(failure)));
    throw;
  }
}

void require_reading(const MailClient& client) {
  if (!client.reads_files()) {
    throw ComposeError(client.name +
                       " runs in a sandbox and cannot read the draft, so copy it to where " +
                       client.name + " can and open it there");
  }
}

void offer_message_file(const GivenDraft& given, const MailClient& client, gio::ProgramStart with) {
  offer(given, client, std::move(with), [&](gio::ProgramStart& start) {
    const std::string& snap = client.sandbox.snap;
    start.uris = {uri_of(snap.empty() ? message_file(given.name()) : given.copy_message_for(snap))};
    return std::string();
  });
}

void give_message_file(TakenDraft& draft, const MailClient& client, gio::ProgramStart with) {
  require_reading(client);
  const GivenDraft given(draft);
  given.remove_files();
  offer_message_file(given, client, std::move(with));
}

/// Puts the files and the text where the client, or a person, looks for them. Answers what the
/// client does not get.
std::string lay_ready(const GivenDraft& given, const MailClient& client, const DraftFields& fields,
                      const std::vector<std::string>& names) {
  given.name_files(names);
  given.add_text(fields.text);
  std::string rest = not_carried(client, fields, names.size());
  if (!rest.empty()) {
    lay_out_files(given.folder(), is_text_too_long(client.way, fields));
  }
  return rest;
}

void give_arguments(TakenDraft& draft, const DraftFields& fields, const MailClient& client,
                    gio::ProgramStart with) {
  const std::vector<std::string> names = names_for(client, draft.folder());
  with.arguments = arguments_for(client, draft.name(), fields, names);
  const GivenDraft given(draft);
  offer(given, client, std::move(with),
        [&](gio::ProgramStart& /*start*/) { return lay_ready(given, client, fields, names); });
}

void give_arguments_again(const GivenDraft& given, const MailClient& client, WriterServer& writer,
                          gio::ProgramStart with) {
  offer(given, client, std::move(with), [&](gio::ProgramStart& start) {
    if (!given.has_files()) {
      throw ComposeError("the files of the draft are in its message file only, which " +
                         client.name + " does not take; quoll-compose --open " + given.name() +
                         " opens it");
    }
    const DraftFields fields = read_fields(given.name(), given.folder(), writer);
    const std::vector<std::string> names = names_for(client, given.folder());
    start.arguments = arguments_for(client, given.name(), fields, names);
    return lay_ready(given, client, fields, names);
  });
}

void require_desktop(const std::string& draft) {
  if (!has_desktop()) {
    throw ComposeError("there is no desktop to open the draft on; quoll-compose --show " +
                       message_file(draft) + " prints it");
  }
}

/// What opens the message file of a draft: the chosen client, or what the desktop has for such
/// files.
MailClient opener() {
  gio::ChosenMailClient chosen = gio::chosen_mail_client();
  if (chosen.client && chosen.client->way == DraftWay::kMessageFile &&
      chosen.client->reads_files() && !chosen.client->sandbox.is_any()) {
    return std::move(*chosen.client);
  }
  gio::EntryHandle entry = gio::opener_of_message_files();
  if (!entry) {
    throw ComposeError("nothing opens message files here",
                       "quoll-compose --clients lists the mail clients that can be chosen");
  }
  return gio::mail_client_of(std::move(entry));
}

/// The size of the message file, which is what will be sent.
off_t size_of(const std::string& message) {
  struct stat status {};
  return stat(message.c_str(), &status) == 0 ? status.st_size : 0;
}

void note_size(Outcome& outcome) {
  constexpr off_t kMostThatTravels = 25'000'000;
  if (const off_t size = size_of(outcome.path); size > kMostThatTravels) {
    outcome.notes.push_back(
        {"The draft has " + size_text(size) + ", and many mail servers refuse more than 25 MB"});
  }
}

/// No client is started for what no mail carries; a person finds the files in one folder.
void require_mail_size(const TakenDraft& draft, const std::string& message) {
  constexpr off_t kMostOfAnyMail = 2'000'000'000;
  if (const off_t size = size_of(message); size > kMostOfAnyMail) {
    lay_out_files(draft.folder(), false);
    throw ComposeError("it has " + size_text(size) + ", and no mail carries more than 2 GB",
                       "quoll-compose --files " + draft.name() + " shows its files");
  }
}

void note_recipients(Outcome& outcome, const DraftFields& fields, const MailClient& client) {
  const std::size_t left_out = fields.not_plain;
  if (client.way == DraftWay::kSylpheed && !fields.bcc.empty()) {
    outcome.notes.push_back({foundation::printable(client.name) +
                             " takes no Bcc, and was not given any; the message file names all"});
  }
  if (left_out != 0) {
    outcome.notes.push_back(
        {(left_out == 1
              ? "A recipient has no address and was not given to "
              : std::to_string(left_out) + " recipients have no address and were not given to ") +
         foundation::printable(client.name) + "; the message file names all"});
  }
}

/// Notes why no client has the draft.
void tell(Outcome& outcome, const std::exception& failure) {
  const auto* const error = dynamic_cast<const ComposeError*>(&failure);
  outcome.reason = foundation::printable(reason_in(failure));
  outcome.advice = error != nullptr ? error->advice() : "";
}

Outcome written(const TakenDraft& draft) {
  Outcome outcome;
  outcome.path = message_file(draft.name());
  outcome.left_out = draft.left_out();
  return outcome;
}

/// Unless it can be moved, it still waits: the next start would write it once more.
void keep_in(Outcome& outcome, TakenDraft& draft, const std::exception& reason) {
  tell(outcome, reason);
  if (const int error = draft.keep()) {
    outcome.state = Outcome::State::kWaits;
    outcome.path = draft.path();
    tell(outcome, ComposeError("it cannot be moved out of " + taken_folder() + ": " +
                               posix::error_words(error)));
  }
}

}  // namespace

bool has_desktop() {
  return is_set("DISPLAY") || is_set("WAYLAND_DISPLAY");
}

Outcome keep(TakenDraft draft, const ComposeError& reason) {
  Outcome outcome = written(draft);
  note_size(outcome);
  keep_in(outcome, draft, reason);
  return outcome;
}

Outcome hand_over(TakenDraft draft, const DraftFields& fields,
                  const gio::ActivationTokens& tokens) {
  if (!has_desktop()) {
    return keep(std::move(draft),
                ComposeError("no display is known here, so no mail client was started",
                             "quollctl doctor tells more"));
  }
  Outcome outcome = written(draft);
  const gio::ChosenMailClient chosen = gio::chosen_mail_client();
  if (!chosen.gone.empty()) {
    outcome.notes.push_back(
        {"The chosen mail client " + foundation::printable(chosen.gone) + " is not there any more",
         "quoll-compose --clients lists those that are"});
  }
  const gio::ProgramStart with{.uris = {}, .arguments = {}, .tokens = tokens};
  try {
    require_mail_size(draft, outcome.path);
    note_size(outcome);
    const MailClient& client = client_for_drafts(chosen);
    if (client.way == DraftWay::kMessageFile) {
      give_message_file(draft, client, with);
    } else {
      note_recipients(outcome, fields, client);
      give_arguments(draft, fields, client, with);
    }
    outcome.state = Outcome::State::kGiven;
    outcome.client = client.name;
  } catch (const std::exception& reason) {
    keep_in(outcome, draft, reason);  // nothing is there when it was offered
    outcome.to_attach = laid_out_files(draft.name());
  }
  return outcome;
}

std::string open_message_file(const std::string& draft, const gio::ActivationTokens& tokens) {
  require_desktop(draft);
  const MailClient client = opener();
  static_cast<void>(
      start(client, {.uris = {uri_of(message_file(draft))}, .arguments = {}, .tokens = tokens}));
  return client.name;
}

std::string open_with_choice(const std::string& draft, const gio::ActivationTokens& tokens) {
  require_desktop(draft);
  switch (gio::open_with_chosen_program(message_file(draft), tokens)) {
    case gio::Choice::kOpened:
      return "The draft was opened with the program that was chosen.";
    case gio::Choice::kCancelled:
      return "No program was chosen.";
    case gio::Choice::kNotOffered:
      break;
  }
  return "The draft was opened with " + foundation::printable(open_message_file(draft, tokens)) +
         ".";
}

std::string give_again(const std::string& draft, const std::string& client_name,
                       WriterServer& writer, const gio::ActivationTokens& tokens) {
  require_desktop(draft);
  const gio::ChosenMailClient chosen =
      client_name.empty() ? gio::chosen_mail_client()
                          : gio::ChosenMailClient{.client = client_called(client_name), .gone = ""};
  const MailClient& client = client_for_drafts(chosen);
  const gio::ProgramStart with{.uris = {}, .arguments = {}, .tokens = tokens};
  if (client.way == DraftWay::kMessageFile) {
    require_reading(client);
    offer_message_file(GivenDraft::again(draft), client, with);
  } else {
    give_arguments_again(GivenDraft::again(draft), client, writer, with);
  }
  return client.name;
}

}  // namespace quoll::compose

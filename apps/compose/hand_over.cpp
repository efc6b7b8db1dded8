#include "apps/compose/hand_over.h"

#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <utility>

#include "apps/compose/cannot_compose.h"
#include "apps/compose/compose_command.h"
#include "apps/compose/message_headers.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/subprocess.h"

namespace quoll::compose {
namespace {

using gio::DraftWay;

constexpr std::chrono::milliseconds kAtOnce{3000};

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

OutgoingDraft outgoing(const ExtensionMessage& message) {
  OutgoingDraft draft{.subject = subject_line(message),
                      .to = addresses_in(text_of_field(message.toString())),
                      .cc = addresses_in(text_of_field(message.ccString())),
                      .bcc = addresses_in(text_of_field(message.bccString())),
                      .text = {},
                      .text_file = {},
                      .files = {}};
  for (const char c : plain_body(message)) {
    draft.text += c == '\0' ? "\u2400" : std::string(1, c);  // a zero byte would end the argument
  }
  return draft;
}

/// What was seen of a process in its first moments.
struct Watched {
  bool is_well = false;      ///< it is running, or it ended without an error
  std::optional<int> error;  ///< its exit status, when it ended with an error
};

Watched watch(pid_t process) {
  const int trouble = posix::wait_for_end(process, std::chrono::steady_clock::now() + kAtOnce);
  if (trouble != 0) {
    return {.is_well = trouble == ETIMEDOUT, .error = std::nullopt};
  }
  const auto status = posix::reap(process);
  return {.is_well = status == 0, .error = status == 0 ? std::nullopt : status};
}

}  // namespace

bool has_desktop() {
  return is_set("DISPLAY") || is_set("WAYLAND_DISPLAY");
}

HandOver::HandOver(const std::string& draft, const ExtensionMessage& message,
                   const std::vector<TakenFile>& files)
    : draft_(draft), has_desktop_(has_desktop()) {
  if (!has_desktop_) {
    return;
  }
  chosen_ = gio::chosen_mail_client();
  try {
    lay_out(message, files);
  } catch (const CannotCompose& reason) {
    failure_ = reason.what();
  }
}

void HandOver::lay_out(const ExtensionMessage& message, const std::vector<TakenFile>& files) {
  if (!chosen_.client) {
    throw CannotCompose(
        "no mail client is chosen for mail links; quoll-compose --clients lists those there are");
  }
  const gio::MailClient& client = *chosen_.client;
  if (client.way == DraftWay::kNone) {
    throw CannotCompose(client.name + " cannot be given a draft, so open or import the file there");
  }
  OutgoingDraft draft = outgoing(message);
  if (client.way != DraftWay::kMessageFile && !client.reads_files() &&
      (!files.empty() || reads_files(client.way, draft))) {
    throw CannotCompose(client.name +
                        " runs in a sandbox and cannot read the attachments, so open or import "
                        "the file there");
  }
  given_.emplace(draft_);
  if (client.way == DraftWay::kMessageFile) {
    lay_out_file();
    return;
  }
  draft.text_file = given_->add_text(draft.text);
  for (const auto& file : files) {
    draft.files.push_back(given_->add(file, name_for_client(client.way, file.name)));
  }
  start_.arguments = client_arguments(client.way, draft);
  if (!std::ranges::all_of(start_.arguments, foundation::is_utf8)) {
    throw CannotCompose("a path that is not UTF-8 cannot be told to " + client.name +
                        ", so open or import the file there");
  }
  if (!are_startable(start_.arguments)) {
    throw CannotCompose("it is too long for " + client.name +
                        ", which takes 131071 bytes, so open or import the file there");
  }
}

void HandOver::lay_out_file() {
  const gio::MailClient& client = *chosen_.client;
  if (!client.reads_files()) {
    throw CannotCompose(client.name +
                        " runs in a sandbox and cannot read the draft, so copy it to where " +
                        client.name + " can and open it there");
  }
  const std::string& snap = client.sandbox.snap;
  start_.uris = {uri_of(snap.empty() ? draft_ : given_->copy_to(folder_of_snap(snap)))};
}

HandedOver HandOver::run(const gio::ActivationTokens& tokens) {
  HandedOver result;
  if (!has_desktop_) {
    return result;
  }
  if (!chosen_.gone.empty()) {
    result.note = "The chosen mail client " + foundation::printable(chosen_.gone) +
                  " is not there any more; quoll-compose --clients lists those that are.";
  }
  if (!failure_) {
    start_.tokens = tokens;
    failure_ = start();
  }
  result.is_given = !failure_;
  result.reason = foundation::printable(failure_.value_or(""));
  result.sentence = failure_ ? "is kept: " + result.reason
                             : "was given to " + foundation::printable(chosen_.client->name);
  return result;
}

gio::Failure HandOver::start() {
  const gio::MailClient& client = *chosen_.client;
  pid_t process = 0;
  if (gio::Failure failure = gio::start_program(client.entry.get(), start_, &process)) {
    return failure;
  }
  const Watched seen = process != 0 ? watch(process) : Watched{};
  if (const auto error = seen.error) {
    return client.name + " ended at once, " +
           (WIFEXITED(*error) ? "with status " + std::to_string(WEXITSTATUS(*error))
                              : "by signal " + std::to_string(WTERMSIG(*error))) +
           "; open or import the file there";
  }
  // The last step: a draft that may not have arrived must never be removed.
  if (seen.is_well && !client.is_in_terminal) {
    given_->mark();
  }
  return std::nullopt;
}

}  // namespace quoll::compose

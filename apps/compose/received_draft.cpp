#include "apps/compose/received_draft.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cstdint>
#include <utility>

#include "apps/compose/cannot_compose.h"
#include "apps/compose/draft_file.h"
#include "apps/compose/draft_summary.h"
#include "apps/compose/message_headers.h"
#include "apps/compose/places.h"
#include "quoll/platform/log.h"

namespace quoll::compose {
namespace {

// Throws when the disk has no room for the draft. It must be found now, because the sender is
// answered before the draft is written.
void require_room(const ComposeCommand& command, const std::vector<TakenFile>& files) {
  std::uint64_t needed = 2 * text_of_field(command.message->htmlBody()).size() +
                         2 * text_of_field(command.message->plainBody()).size();
  for (const auto& file : files) {
    struct stat status {};
    if (stat(file.path.c_str(), &status) == 0) {
      // The size in Base64: 57 bytes become a line of 76, with a line end of two bytes.
      needed += static_cast<std::uint64_t>(status.st_size) / 57 * 78 + 1024;
    }
  }
  struct statvfs room {};
  const std::string folder = drafts_folder();
  if (statvfs(folder.c_str(), &room) == 0 && room.f_bavail * room.f_frsize < needed) {
    throw CannotCompose("there is no room for the draft: it needs " + std::to_string(needed) +
                        " bytes in " + folder);
  }
}

// Logs the first files that were left out; a stranger may name any number.
void log_left_out(const std::vector<LeftOut>& left_out) {
  constexpr std::size_t kMost = 20;
  for (std::size_t at = 0; at < left_out.size() && at < kMost; ++at) {
    platform::log("left out %@: %@", left_out[at].name, left_out[at].reason);
  }
  if (left_out.size() > kMost) {
    platform::log("left out %@ more", left_out.size() - kMost);
  }
}

std::string named_after(const std::vector<TakenFile>& files) {
  const std::size_t more = files.size() - 1;
  return files.front().name + (more == 0 ? "" : " and " + std::to_string(more) + " more");
}

// A warning when the draft is too large. The size is that of the message file, which is what will
// be sent.
std::vector<std::string> notes_on_size(const std::string& draft) {
  constexpr off_t kMostThatTravels = 25'000'000;
  struct stat status {};
  if (stat(draft.c_str(), &status) != 0 || status.st_size <= kMostThatTravels) {
    return {};
  }
  return {"The draft has " + size_text(status.st_size) +
          ", and many mail servers refuse more than 25 MB."};
}

}  // namespace

ReceivedDraft::ReceivedDraft(std::string_view url)
    : command_(read_compose_command(url)),
      under_way_(mark_draft_under_way()),
      files_(command_.attachments) {
  require_room(command_, files_.files());
  if (subject_line(*command_.message).empty() && !files_.files().empty()) {
    command_.message->subject = named_after(files_.files());
  }
}

std::string ReceivedDraft::write() const {
  return write_draft(*command_.message, files_.files());
}

HandOver ReceivedDraft::hand_over(const std::string& path) const {
  return {path, *command_.message, files_.files()};
}

WrittenDraft write(std::unique_ptr<ReceivedDraft> received) {
  FinishedDraft draft{
      .path = received->write(), .left_out = received->left_out(), .handed_over = {}, .notes = {}};
  log_left_out(draft.left_out);
  draft.notes = notes_on_size(draft.path);
  HandOver hand_over = received->hand_over(draft.path);
  return {.draft = std::move(draft), .hand_over = std::move(hand_over)};
}

FinishedDraft hand_over(WrittenDraft written, const gio::ActivationTokens& tokens) {
  FinishedDraft finished = std::move(written.draft);
  finished.handed_over = written.hand_over.run(tokens);
  if (!finished.handed_over.note.empty()) {
    finished.notes.push_back(finished.handed_over.note);
  }
  for (const auto& note : finished.notes) {
    platform::log("%@", note);
  }
  platform::log("draft %@ %@", finished.path, finished.handed_over.sentence);
  return finished;
}

FinishedDraft finish(std::unique_ptr<ReceivedDraft> received, const gio::ActivationTokens& tokens) {
  return hand_over(write(std::move(received)), tokens);
}

}  // namespace quoll::compose

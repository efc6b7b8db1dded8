#include "apps/compose/draft_list.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>
#include <tuple>

#include "apps/compose/compose_error.h"
#include "apps/compose/draft_name.h"
#include "apps/compose/draft_summary.h"
#include "apps/compose/folders.h"
#include "apps/compose/given_draft.h"
#include "apps/compose/noted_reason.h"
#include "apps/compose/taken_draft.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::compose {
namespace {

ListedDraft written_draft(const std::string& name) {
  ListedDraft draft{.name = name, .path = message_file(name), .state = "kept", .is_message = true};
  switch (giving_of(name)) {
    case Giving::kGiven:
      draft.state = "given";
      break;
    case Giving::kNow:
      draft.state = "being given";
      break;
    case Giving::kPerhaps:
      draft.state = "perhaps given";
      break;
    case Giving::kNone:
      draft.reason = noted_reason(given_folder() + "/" + name);
      break;
  }
  return draft;
}

std::string subject_for_list(const std::string& path) {
  try {
    const std::string subject = subject_of(path);
    return subject.empty() ? "(no subject)" : foundation::printable(subject);
  } catch (const ComposeError&) {
    return "(cannot be read)";
  }
}

bool exists(const std::string& path) {
  return access(path.c_str(), F_OK) == 0;
}

std::string time_text(const ListedDraft& draft, const char* pattern) {
  std::array<char, 32> time{};
  std::tm local{};
  localtime_r(&draft.time.tv_sec, &local);
  std::strftime(time.data(), time.size(), pattern, &local);
  return time.data();
}

void add(std::vector<ListedDraft>& drafts, ListedDraft draft, const std::string& dated) {
  struct stat status {};
  if (stat(dated.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
    draft.time = status.st_mtim;
    drafts.push_back(std::move(draft));
  }
}

}  // namespace

std::vector<ListedDraft> list_drafts() {
  std::vector<ListedDraft> drafts;
  for (const std::string& name : taken_drafts()) {
    const std::string path = taken_folder() + "/" + name;
    const auto reason = why_aside(name);
    add(drafts,
        {.name = name,
         .path = path,
         .state = reason ? "set aside" : "waiting",
         .reason = reason ? *reason : noted_reason(path),
         .is_message = false,
         .files = exists(path + "/files") ? path + "/files" : ""},
        path + "/command");
  }
  std::set<std::string> listed;
  std::ranges::transform(drafts, std::inserter(listed, listed.end()), &ListedDraft::name);
  for (const std::string& file : names_in(drafts_folder())) {
    const std::string name =
        file.substr(0, file.size() - std::min(file.size(), kMessageEnding.size()));
    // What was taken may have been written and gone from there since.
    const bool is_taken = listed.contains(name);
    if (file.ends_with(kMessageEnding) && is_draft_name(name) && !is_taken) {
      add(drafts, written_draft(name), message_file(name));
    }
  }
  std::ranges::sort(drafts, {}, [](const ListedDraft& draft) {
    return std::tuple(draft.time.tv_sec, draft.time.tv_nsec, draft.path);
  });
  return drafts;
}

void print_line(std::ostream& out, const ListedDraft& draft) {
  out << foundation::printable(draft.name) << "  " << time_text(draft, "%Y-%m-%d %H:%M:%S") << "  "
      << draft.state << (draft.reason.empty() ? "" : ": ") << foundation::printable(draft.reason)
      << "  ";
  if (draft.is_message) {
    out << subject_for_list(draft.path) << "  ";
  }
  out << foundation::printable(draft.path) << '\n';
}

void print_advice(std::ostream& out, const std::vector<ListedDraft>& drafts) {
  const std::pair<const char*, const char*> rows[] = {
      {"waiting", "quoll-compose --resume goes on with it"},
      {"set aside",
       "what was shared lies in its folder for 30 days, the files in PATH/files; quoll-compose "
       "--delete NAME removes it"},
      {"kept",
       "quoll-compose --again NAME gives it to a mail client, quoll-compose --open NAME opens it, "
       "quoll-compose --files NAME shows its files"},
      {"perhaps given",
       "see whether the mail client has it; quoll-compose --again NAME gives it once more"},
  };
  for (const auto& [state, advice] : rows) {
    if (std::ranges::find(drafts, state, &ListedDraft::state) != drafts.end()) {
      out << state << ": " << advice << '\n';
    }
  }
}

void print_json(std::ostream& out, const std::vector<ListedDraft>& drafts) {
  auto list = nlohmann::ordered_json::array();
  for (const ListedDraft& draft : drafts) {
    list.push_back({{"name", foundation::printable(draft.name)},
                    {"time", time_text(draft, "%Y-%m-%dT%H:%M:%S%z")},
                    {"state", draft.state},
                    {"reason", foundation::printable(draft.reason)},
                    {"subject", draft.is_message ? subject_for_list(draft.path) : ""},
                    {"path", foundation::printable(draft.path)},
                    {"written", draft.is_message},
                    {"files", foundation::printable(draft.files)}});
  }
  out << list.dump(2) << '\n';
}

std::string draft_called(const std::string& name, bool is_written) {
  const bool has_file = is_draft_name(name) && exists(message_file(name));
  const bool is_taken = is_draft_name(name) && exists(taken_folder() + "/" + name);
  if (!has_file && !is_taken) {
    throw ComposeError("there is no draft " + foundation::printable(name),
                       "quoll-compose --list names those there are");
  }
  if (is_written && is_taken) {
    const auto reason = why_aside(name);
    throw reason ? ComposeError("the draft " + name + " was set aside: " + *reason,
                                "what was shared lies in " + taken_folder() + "/" + name)
                 : ComposeError("the draft " + name + " is not written yet",
                                "quoll-compose --list tells its state");
  }
  return name;
}

void delete_draft(const std::string& name) {
  if (!exists(taken_folder() + "/" + name)) {
    remove_written(name);
    return;
  }
  auto draft = TakenDraft::lock(name);
  if (!draft) {
    throw ComposeError("another program works on the draft " + name + "; try again later");
  }
  const std::string path = message_file(name);  // written, and not offered to a client yet
  if (unlink(path.c_str()) != 0 && errno != ENOENT) {
    throw ComposeError(path + " cannot be removed: " + posix::error_words(errno));
  }
  if (const int error = draft->remove()) {
    throw ComposeError(taken_folder() + "/" + name +
                       " cannot be removed: " + posix::error_words(error));
  }
}

std::string newest_message_file() {
  using std::chrono::steady_clock;
  constexpr std::chrono::seconds kPatience{5};
  constexpr std::chrono::milliseconds kPause{10};
  const auto deadline = steady_clock::now() + kPatience;
  for (;;) {
    const std::vector<std::string> waiting = waiting_drafts();
    if (!waiting.empty() && steady_clock::now() < deadline) {
      std::this_thread::sleep_for(kPause);
      continue;
    }
    const std::vector<ListedDraft> drafts = list_drafts();
    const auto newest = std::find_if(drafts.rbegin(), drafts.rend(),
                                     [](const ListedDraft& draft) { return draft.is_message; });
    if (newest == drafts.rend()) {
      throw ComposeError(drafts.empty()
                             ? "no draft is kept"
                             : "no draft is written yet; quoll-compose --list tells what waits");
    }
    return newest->path;
  }
}

}  // namespace quoll::compose

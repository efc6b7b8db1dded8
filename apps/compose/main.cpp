#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/compose/client_choice.h"
#include "apps/compose/compose_error.h"
#include "apps/compose/draft_list.h"
#include "apps/compose/draft_name.h"
#include "apps/compose/draft_summary.h"
#include "apps/compose/draft_thread.h"
#include "apps/compose/files_to_attach.h"
#include "apps/compose/folders.h"
#include "apps/compose/hand_over.h"
#include "apps/compose/notifications.h"
#include "apps/compose/options.h"
#include "apps/compose/service.h"
#include "apps/compose/taken_pipe.h"
#include "apps/compose/taker.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/linux/posix/subprocess.h"
#include "quoll/linux/posix/system_log.h"
#include "quoll/message/command_launcher.h"
#include "quoll/platform/desktop.h"

namespace {

using namespace quoll;
using compose::Options;

/// Whether somebody reads the output. Nobody does when a desktop opens a link by this program's
/// entry.
bool is_read() {
  return isatty(STDOUT_FILENO) != 0 || isatty(STDERR_FILENO) != 0 || !compose::has_desktop();
}

/// Another process reads the message file, since this one starts mail clients.
void print_summary(const std::string& path) {
  std::cout.flush();
  const posix::UniqueFd output(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  posix::Subprocess summary(
      {.words = {"/proc/self/exe", "--show", path}, .input = -1, .output = output.get()});
  if (summary.start_error() == 0) {
    static_cast<void>(summary.end_by(std::chrono::steady_clock::time_point::max()));
  }
}

void print(const compose::Outcome& outcome) {
  std::string draft = "The draft";
  if (outcome.is_written()) {
    print_summary(outcome.path);
  } else {
    std::cout << "Draft: " << foundation::printable(outcome.path) << '\n';
    (draft += ' ') += foundation::last_path_component(outcome.path);
  }
  for (const auto& file : outcome.left_out.named) {
    std::cout << "Left out: " << foundation::printable(file.name) << ": " << file.reason << '\n';
  }
  if (outcome.left_out.more != 0) {
    std::cout << "Left out: " << outcome.left_out.more << " more\n";
  }
  std::cout << draft << ' ' << outcome.sentence() << ".\n";
  for (const auto& note : outcome.notes) {
    std::cout << note.sentence() << '\n';
  }
}

/// Takes the drafts of these commands, each by itself.
std::vector<compose::TakenDraft> take_each(const std::vector<std::string>& urls,
                                           compose::NotificationQueue& notifications) {
  std::vector<compose::TakenDraft> drafts;
  for (const auto& url : urls) {
    try {
      drafts.push_back(std::move(compose::take({url}).front()));
    } catch (const std::exception& reason) {
      std::cerr << "quoll-compose: " << foundation::printable(reason.what()) << '\n';
      notifications.add(compose::notification_of_refusal(reason.what()));
    }
  }
  return drafts;
}

/// Writes and hands over these drafts, and all that wait for a desktop when there is one. Answers
/// the exit status, which is about these drafts; when there are none, about those that wait, which
/// are then gone on with in any case.
int finish(std::vector<compose::TakenDraft> drafts, const gio::ActivationTokens& tokens,
           compose::NotificationQueue& notifications) {
  using Earlier = compose::DraftThread::Earlier;
  const bool is_resuming = drafts.empty();
  int status = 0;
  auto writer = compose::WriterServer::start();
  {
    compose::DraftThread thread(
        writer, is_resuming || compose::has_desktop() ? Earlier::kAreGoneOnWith : Earlier::kAreLeft,
        {.finished =
             [&](const compose::Outcome& outcome) {
               notifications.add(outcome);
               print(outcome);
               const bool is_whole = outcome.is_written() && outcome.left_out.empty();
               status = is_whole || (outcome.is_earlier && !is_resuming) ? status : 1;
             },
         .flood_is_over = [&] { notifications.add(compose::notification_of_flood()); }});
    thread.add(std::move(drafts), tokens);
  }
  if (!is_read()) {
    compose::show_and_wait(notifications.take());
  }
  return status;
}

int compose(const std::vector<std::string>& urls, posix::UniqueFd taken_pipe) {
  const auto tokens = gio::take_activation_tokens();
  compose::NotificationQueue notifications([] {});
  std::vector<compose::TakenDraft> drafts = take_each(urls, notifications);
  const bool is_refused = drafts.size() != urls.size();
  compose::report_taken(std::move(taken_pipe), is_refused, compose::report_of(drafts));
  if (drafts.empty() && is_refused) {
    if (!is_read()) {
      compose::show_and_wait(notifications.take());
    }
    return 1;
  }
  const int status = finish(std::move(drafts), tokens, notifications);
  return is_refused ? 1 : status;
}

int resume() {
  if (compose::waiting_drafts().empty()) {
    return 0;
  }
  compose::NotificationQueue notifications([] {});
  return finish({}, {}, notifications);
}

/// `named` is a draft's name or a path; empty for the newest.
int show(const std::string& named) {
  const std::string path = named.empty() ? compose::newest_message_file()
                           : compose::is_draft_name(named)
                               ? compose::message_file(compose::draft_called(named, true))
                               : named;
  posix::UniqueFd file = compose::open_message(path);
  compose::confine_reader(-1);
  print_summary(std::cout, compose::read_draft(std::move(file), path));
  return 0;
}

int list(bool is_json) {
  const auto drafts = compose::list_drafts();
  const posix::UniqueFd folder(
      open(compose::drafts_folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  compose::confine_reader(folder.get());
  if (is_json) {
    compose::print_json(std::cout, drafts);
    return 0;
  }
  for (const auto& draft : drafts) {
    compose::print_line(std::cout, draft);
  }
  std::cout.flush();
  compose::print_advice(std::cerr, drafts);
  return 0;
}

std::string opened(const std::string& draft, const gio::ActivationTokens& tokens) {
  return "The draft was opened with " +
         foundation::printable(compose::open_message_file(draft, tokens)) + ".";
}

std::string shown(const std::string& draft, const gio::ActivationTokens& tokens) {
  compose::show_files(draft, tokens);
  return "The files are shown in the file manager.";
}

/// What a button of a notification does, too: `act` answers what it has done with a draft.
template <typename Act>
int act_on(const std::string& name, const Act& act) {
  const auto tokens = gio::take_activation_tokens();
  try {
    std::cout << act(compose::draft_called(name, true), tokens) << '\n';
  } catch (const std::exception& reason) {
    if (!is_read()) {
      compose::show_and_wait({compose::notification_of_unopened(compose::reason_in(reason))});
    }
    throw;
  }
  return 0;
}

int give_again(const std::string& name, const std::string& client) {
  const auto tokens = gio::take_activation_tokens();
  const std::string draft = compose::draft_called(name, true);
  auto writer = compose::WriterServer::start();
  const std::string given_to = compose::give_again(draft, client, writer, tokens);
  std::cout << "The draft was given to " << foundation::printable(given_to) << ".\n";
  return 0;
}

int remove(const std::string& name) {
  compose::delete_draft(compose::draft_called(name, false));
  std::cout << "The draft is deleted.\n";
  return 0;
}

int choose(const std::string& client) {
  std::cout << compose::choose_client(client) << '\n';
  return 0;
}

int list_clients() {
  compose::print_clients(std::cout);
  return 0;
}

int serve(double idle_seconds) {
  const auto identifier = platform::main_bundle_identifier();
  const std::string* name = identifier.text();
  auto writer = compose::WriterServer::start();
  return compose::serve(name != nullptr ? *name : std::string(it_vorlent_quoll_2),
                        std::chrono::milliseconds(static_cast<std::int64_t>(idle_seconds * 1000)),
                        writer);
}

int run(const Options& options, posix::UniqueFd taken_pipe) {
  if (options.service) {
    return serve(options.idle_seconds);
  }
  if (options.resume) {
    return resume();
  }
  if (options.list) {
    return list(options.json);
  }
  if (options.open) {
    return act_on(*options.open, opened);
  }
  if (options.ask) {
    return act_on(*options.ask, compose::open_with_choice);
  }
  if (options.files) {
    return act_on(*options.files, shown);
  }
  if (options.again) {
    return give_again(*options.again, options.client);
  }
  if (options.remove) {
    return remove(*options.remove);
  }
  if (options.clients) {
    return list_clients();
  }
  if (options.choose) {
    return choose(options.client);
  }
  if (options.check) {
    compose::try_taking();
    return 0;
  }
  return options.show ? show(options.draft) : compose(options.urls, std::move(taken_pipe));
}

}  // namespace

int main(int argc, char** argv) {
  posix::UniqueFd taken_pipe = compose::inherited_pipe();
  Options options;
  if (const auto status = compose::parse(argc, argv, options)) {
    return *status;
  }
  platform::install({.bundle = posix::make_program_bundle(std::string(it_vorlent_quoll_2)),
                     .files = posix::make_file_manager(),
                     .coordinator = {},
                     .workspace = {},
                     .notifications = {},
                     .log = posix::make_system_log("quoll-compose"),
                     .queue = {},
                     .clock = {},
                     .images = {},
                     .styled_text = {}});
  std::signal(SIGCHLD, SIG_DFL);  // inherited; the end of a client is waited for
  std::signal(SIGXFSZ, SIG_IGN);  // write() reports what does not fit
  try {
    return run(options, std::move(taken_pipe));
  } catch (const std::exception& exception) {
    std::cerr << "quoll-compose: " << foundation::printable(exception.what()) << '\n';
    return 1;
  }
}

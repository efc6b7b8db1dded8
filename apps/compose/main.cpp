#include <gmime/gmime.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/compose/cannot_compose.h"
#include "apps/compose/client_choice.h"
#include "apps/compose/draft_summary.h"
#include "apps/compose/notice.h"
#include "apps/compose/places.h"
#include "apps/compose/received_draft.h"
#include "apps/compose/service.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/linux/posix/system_log.h"
#include "quoll/message/command_launcher.h"
#include "quoll/platform/desktop.h"

namespace {

using namespace quoll;

struct Options {
  std::vector<std::string> urls;
  std::string draft;   ///< the draft to show; empty for the newest
  std::string client;  ///< the client to choose; empty for the default
  double idle_seconds = 10;
  bool service = false;
  bool list = false;
  bool show = false;
  bool clients = false;
  bool choose = false;
};

/// Whether somebody reads the output. Nobody does when a desktop opens a link by this program's
/// entry.
bool is_read() {
  return isatty(STDOUT_FILENO) != 0 || isatty(STDERR_FILENO) != 0 || !compose::has_desktop();
}

void print(const compose::FinishedDraft& draft) {
  compose::print_summary(std::cout, compose::read_draft(draft.path), draft.left_out);
  if (!draft.handed_over.sentence.empty()) {
    std::cout << "The draft " << draft.handed_over.sentence << ".\n";
  }
  for (const auto& note : draft.notes) {
    std::cout << note << '\n';
  }
}

int compose(const std::vector<std::string>& urls) {
  const auto tokens = gio::take_activation_tokens();
  compose::Notices notices([] {});
  int status = 0;
  for (const auto& url : urls) {
    try {
      const auto draft = finish(std::make_unique<compose::ReceivedDraft>(url), tokens);
      if (auto notice = compose::notice_of(draft)) {
        notices.add(std::move(*notice));
      }
      print(draft);
      status = draft.left_out.empty() ? status : 1;
    } catch (const compose::CannotCompose& reason) {
      std::cerr << "quoll-compose: " << foundation::printable(reason.what()) << '\n';
      notices.add(compose::refusal_notice(reason.what()));
      status = 1;
    }
  }
  if (!is_read()) {
    notices.show();
  }
  return status;
}

int show(std::string path) {
  if (path.empty()) {
    compose::wait_for_drafts_under_way();
    const auto drafts = compose::kept_drafts();
    if (drafts.empty()) {
      throw compose::CannotCompose("no draft is kept");
    }
    path = drafts.back().path;
  }
  compose::print_summary(std::cout, compose::read_draft(path), {});
  return 0;
}

int list() {
  compose::wait_for_drafts_under_way();
  for (const auto& draft : compose::kept_drafts()) {
    compose::print_line(std::cout, draft);
  }
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
  return compose::serve(name != nullptr ? *name : std::string(it_vorlent_quoll_2),
                        std::chrono::milliseconds(static_cast<std::int64_t>(idle_seconds * 1000)));
}

/// Reads the command line into `options`. Answers an exit status after help or wrong use.
std::optional<int> parse(int argc, char** argv, Options& options) {
  CLI::App app{
      "Takes the drafts of shares where no mail application is installed: keeps each as a message\n"
      "file and opens it in the mail client that is the default for mail links, or in the chosen\n"
      "one. A draft that a client was given is removed 7 days later; the others stay."};
  app.set_version_flag("--version", "quoll-compose " QUOLL_VERSION);
  auto* urls = app.add_option("URL", options.urls, "compose commands, quoll://compose?...");
  auto* service = app.add_flag("--service", options.service, "take drafts from the session bus");
  app.add_option("--idle", options.idle_seconds, "end the service after so many idle seconds")
      ->needs(service)
      ->check(CLI::Range(0.0, 86400.0))
      ->capture_default_str();
  auto* list = app.add_flag("--list", options.list, "list the drafts that are kept, newest last");
  auto* show = app.add_option("--show", options.draft, "show this draft, or the newest")
                   ->type_name("[FILE]")
                   ->expected(0, 1);
  auto* clients =
      app.add_flag("--clients", options.clients, "list the mail clients that are there");
  auto* client =
      app.add_option("--client", options.client,
                     "from now on give drafts to this mail client; \"default\" goes back")
          ->type_name("NAME");
  const std::vector<CLI::Option*> actions{urls, service, list, show, clients, client};
  for (std::size_t at = 0; at < actions.size(); ++at) {
    for (std::size_t other = at + 1; other < actions.size(); ++other) {
      actions[at]->excludes(actions[other]);
    }
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  options.show = show->count() > 0;
  options.choose = client->count() > 0;
  if (std::ranges::all_of(actions, [](const auto* action) { return action->count() == 0; })) {
    std::cerr << "quoll-compose: nothing to do; see quoll-compose --help\n";
    return 2;
  }
  return std::nullopt;
}

int run(const Options& options) {
  if (options.service) {
    return serve(options.idle_seconds);
  }
  if (options.list) {
    return list();
  }
  if (options.clients) {
    return list_clients();
  }
  if (options.choose) {
    return choose(options.client);
  }
  return options.show ? show(options.draft) : compose(options.urls);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (const auto status = parse(argc, argv, options)) {
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
  g_mime_init();
  try {
    return run(options);
  } catch (const std::exception& exception) {
    std::cerr << "quoll-compose: " << exception.what() << '\n';
    return 1;
  }
}

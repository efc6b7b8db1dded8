#include "apps/compose/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "quoll/foundation/printable.h"

namespace quoll::compose {
namespace {

using Actions = std::vector<const CLI::Option*>;

int wrong_use(const std::string& what) {
  std::cerr << "quoll-compose: " << foundation::printable(what) << "; see quoll-compose --help\n";
  return 2;
}

/// The error in words for people: the library counts what is missing.
std::string words_for(const CLI::App& app, const CLI::ParseError& error) {
  std::string words = error.what();
  const auto* const option = app.get_option_no_throw(words.substr(0, words.find(':')));
  const bool is_missing = dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr;
  if (option != nullptr && option->count() > 1) {
    words = option->get_name() + " is given twice";
  } else if (option != nullptr && is_missing && option->get_expected_min() == 1) {
    const std::string value = option->get_type_name();
    words = option->get_name() + (value.ends_with('S') ? " needs " : " needs a ") + value;
  }
  return words;
}

/// What is wrong with these actions together; empty when nothing is.
std::string trouble_with(Actions given, const CLI::Option* again, const CLI::Option* client) {
  std::erase_if(given, [](const CLI::Option* action) { return action->count() == 0; });
  if (given.empty()) {
    return "nothing to do";
  }
  if (given.size() == 1 || given == Actions{again, client}) {
    return "";
  }
  std::string names;
  for (const CLI::Option* action : given) {
    names += (names.empty() ? "" : ", ") + action->get_name();
  }
  return "give one of " + names;
}

}  // namespace

std::optional<int> parse(int argc, char** argv, Options& options) {
  CLI::App app{
      "Takes the drafts of shares where no mail application is installed: keeps each as a message\n"
      "file and opens it in the mail client that is the default for mail links, or in the chosen\n"
      "one. A draft that a client was given is removed 7 days later; the others stay."};
  app.footer(
      "\nExamples:\n"
      "  quoll-compose --client thunderbird\n"
      "  quoll-compose --again 20261121-040040 --client kmail\n"
      "\nExit status: 0 done, 1 not done or something was left out, 2 wrong usage.");
  app.set_version_flag("--version", "quoll-compose " QUOLL_VERSION);
  auto* urls = app.add_option("URL", options.urls, "compose commands, quoll://compose?...");
  auto* service = app.add_flag("--service", options.service, "take drafts from the session bus");
  auto* idle = app.add_option("--idle", options.idle_seconds,
                              "end the service after so many idle seconds, 86400 at most")
                   ->check([](const std::string& seconds) {
                     const bool is_finite = CLI::Range(0.0, 86400.0)(seconds).empty() &&
                                            seconds.find_first_of("nN") == std::string::npos;
                     return is_finite ? "" : "it takes 0 to 86400 seconds";
                   })
                   ->type_name("SECONDS")
                   ->capture_default_str();
  auto* resume =
      app.add_flag("--resume", options.resume, "go on with the drafts that wait, if there are any");
  auto* list = app.add_flag("--list", options.list, "list the drafts, newest last");
  app.add_flag("--json", options.json, "list them for programs");
  auto* open = app.add_option("--open", options.open, "open the message file of this draft")
                   ->type_name("NAME");
  auto* again = app.add_option("--again", options.again,
                               "give this draft to the mail client again, or to that of --client")
                    ->type_name("NAME");
  auto* remove = app.add_option("--delete", options.remove, "delete this draft")->type_name("NAME");
  auto* show =
      app.add_option("--show", options.draft, "show the draft of this name or path, or the newest")
          ->type_name("[FILE]")
          ->expected(0, 1);
  auto* clients =
      app.add_flag("--clients", options.clients, "list the mail clients that are there");
  auto* client =
      app.add_option("--client", options.client,
                     "from now on give drafts to this mail client; \"default\" goes back")
          ->type_name("NAME");
  auto* check = app.add_flag("--check", options.check,
                             "see whether drafts can be kept, and say why they cannot");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked_for_help) {
    return app.exit(asked_for_help);
  } catch (const CLI::ParseError& error) {
    return wrong_use(words_for(app, error));
  }
  options.show = show->count() > 0;
  options.choose = client->count() > 0;
  if (idle->count() > 0 && !options.service) {
    return wrong_use("--idle is for --service");
  }
  if (options.json && !options.list) {
    return wrong_use("--json is for --list");
  }
  const std::string trouble =
      trouble_with({urls, service, resume, list, show, open, again, remove, clients, client, check},
                   again, client);
  return trouble.empty() ? std::nullopt : std::optional(wrong_use(trouble));
}

}  // namespace quoll::compose

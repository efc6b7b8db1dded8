#include "apps/compose/options.h"

#include <algorithm>

#include "apps/command_line/command_line.h"

namespace quoll::compose {
namespace {

using command_line::Option;

/// What is wrong with these actions together; empty when nothing is.
std::string trouble_with(std::vector<Option> given, const Option& again, const Option& client) {
  std::erase_if(given, [](const Option& action) { return !action.is_given(); });
  if (given.empty()) {
    return "nothing to do";
  }
  if (given.size() == 1 || given == std::vector{again, client}) {
    return "";
  }
  std::string names;
  for (const Option& action : given) {
    names += (names.empty() ? "" : ", ") + action.name();
  }
  return "give one of " + names;
}

}  // namespace

std::optional<int> parse(int argc, char** argv, Options& options) {
  command_line::CommandLine line(
      "quoll-compose", QUOLL_VERSION,
      "Takes the drafts of shares where no mail application is installed: keeps each as a message\n"
      "file and opens it in the mail client that is the default for mail links, or in the chosen\n"
      "one. A draft that a client was given is removed 7 days later; the others stay.",
      "\nExamples:\n"
      "  quoll-compose --client thunderbird\n"
      "  quoll-compose --again 20261121-040040 --client kmail\n"
      "\nExit status: 0 done, 1 not done or something was left out, 2 wrong usage.");
  const Option urls = line.values("URL", options.urls, "compose commands, quoll://compose?...");
  const Option service =
      line.flag("--service", options.service, "take drafts from the session bus");
  const Option idle = line.value("--idle", options.idle_seconds,
                                 "end the service after so many idle seconds, 86400 at most")
                          .range(0, 86400, "seconds")
                          .placeholder("SECONDS")
                          .show_default();
  const Option resume =
      line.flag("--resume", options.resume, "go on with the drafts that wait, if there are any");
  const Option list = line.flag("--list", options.list, "list the drafts, newest last");
  line.flag("--json", options.json, "list them for programs");
  const Option open =
      line.value("--open", options.open, "open the message file of this draft").placeholder("NAME");
  const Option ask =
      line.value("--ask", options.ask, "have the desktop ask which program shall open this draft")
          .placeholder("NAME");
  const Option files =
      line.value("--files", options.files, "show the files of this draft in the file manager")
          .placeholder("NAME");
  const Option again =
      line.value("--again", options.again,
                 "give this draft to the mail client again, or to that of --client")
          .placeholder("NAME");
  const Option remove =
      line.value("--delete", options.remove, "delete this draft").placeholder("NAME");
  const Option show =
      line.value("--show", options.draft, "show the draft of this name or path, or the newest")
          .placeholder("[FILE]")
          .value_may_miss();
  const Option clients =
      line.flag("--clients", options.clients, "list the mail clients that are there");
  const Option client =
      line.value("--client", options.client,
                 "from now on give drafts to this mail client; \"default\" goes back")
          .placeholder("NAME");
  const Option check = line.flag("--check", options.check,
                                 "see whether drafts can be kept, and say why they cannot");
  if (const auto status = line.read(argc, argv)) {
    return status;
  }
  options.show = show.is_given();
  options.choose = client.is_given();
  if (idle.is_given() && !options.service) {
    return line.wrong_usage("--idle is for --service");
  }
  if (options.json && !options.list) {
    return line.wrong_usage("--json is for --list");
  }
  const std::string trouble = trouble_with(
      {urls, service, resume, list, show, open, ask, files, again, remove, clients, client, check},
      again, client);
  return trouble.empty() ? std::nullopt : std::optional(line.wrong_usage(trouble));
}

}  // namespace quoll::compose

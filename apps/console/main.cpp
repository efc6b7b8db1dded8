#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "apps/console/commands.h"
#include "apps/console/output.h"
#include "apps/share/usage_words.h"
#include "quoll/message/command_launcher.h"

namespace {

constexpr const char* kExamples = R"(Examples:
    quollctl doctor                     why did a share not arrive?
    quollctl forget                     removes the copies of what was shared last
    quollctl show 'quoll://compose?subject=Hi'
    quollctl accounts --json)";

/// Says in one line what is wrong with the command line, and answers the exit status.
int wrong_usage(const CLI::App& app, int argc, char** argv, const CLI::ParseError& error) {
  constexpr int kUsage = 2;
  const std::string name = argc > 1 ? argv[1] : "";
  const auto chosen = app.get_subcommands();
  const bool is_unknown = chosen.empty() && !name.empty();
  const std::string kind = name.starts_with('-') ? "option " : "subcommand ";
  quoll::console::complain(
      (is_unknown ? "there is no " + kind + name : quoll::share::in_plain_words(error.what())) +
      "; see quollctl " + (chosen.empty() ? "" : chosen.front()->get_name() + " ") + "--help");
  return kUsage;
}

}  // namespace

int main(int argc, char** argv) {
  using quoll::console::PropertyListForm;
  namespace console = quoll::console;
  CLI::App app("Drives and explains what the share extension's library does.", "quollctl");
  app.set_version_flag("--version", "quollctl " QUOLL_VERSION);
  app.footer(kExamples);
  app.require_subcommand(1);
  std::function<int()> chosen;
  bool as_json = false;
  const auto add = [&](const char* name, const char* text, const std::string& example,
                       std::function<int()> run) {
    CLI::App* const command = app.add_subcommand(name, text);
    command->footer("Example:\n    " + example);
    command->callback([&chosen, run = std::move(run)] { chosen = run; });
    return command;
  };
  const auto add_with_json = [&](const char* name, const char* text, const char* arguments,
                                 std::function<int()> run) {
    CLI::App* const command =
        add(name, text, std::string("quollctl ") + name + arguments, std::move(run));
    command->add_flag("--json", as_json, "Print JSON");
    return command;
  };

  add("call", "Answers JSON requests on standard input, one a line, by JSON replies.",
      R"(echo '{"op": "URLEncodedString", "on": "a b"}' | quollctl call)", console::call);

  std::string url;
  add_with_json("show", "Prints what a quoll:// command URL says.", " 'quoll://compose?subject=Hi'",
                [&] { return console::show(url, as_json); })
      ->add_option("URL", url, "The command URL")
      ->required();
  add_with_json("url", "Takes a URL apart.", " 'https://example.org/a?b=c'",
                [&] { return console::url(url, as_json); })
      ->add_option("URL", url, "The URL")
      ->required();

  add_with_json("accounts", "Prints the shared mail accounts.", " --json",
                [&] { return console::accounts(as_json); });
  add_with_json("contacts", "Prints the shared address book.", " --json",
                [&] { return console::contacts(as_json); });

  std::optional<std::string> moment;
  add_with_json("date", "Prints a date in the forms that are shared.", " 2024-03-07T10:15:00Z",
                [&] { return console::date(moment, as_json); })
      ->add_option("DATE", moment,
                   "A date like 2024-03-07T10:15:00Z or seconds since 1970; now unless given");

  std::string message;
  add_with_json("render", "Prints a message as HTML.", " message.plist",
                [&] { return console::render(message, as_json); })
      ->add_option("FILE", message,
                   "A message: a property list, or JSON of its fields; - for standard input")
      ->required();

  std::string command;
  std::vector<std::string> messages;
  bool background = false;
  CLI::App* const launch =
      add_with_json("launch", "Hands a command to the mail application.", " reply message.plist",
                    [&] { return console::launch(command, messages, background, as_json); });
  launch->add_option("COMMAND", command, "What to do with the messages")
      ->required()
      ->check(CLI::IsMember(std::vector<std::string_view>{
          quoll::commandArchive, quoll::commandDelete, quoll::commandReply, quoll::commandMessage,
          quoll::commandCompose, quoll::commandSend, quoll::commandOpen}));
  launch->add_option("FILE", messages, "The messages, as for render")->required();
  launch->add_flag("--background", background, "Leave the application in the background");

  bool repair = false;
  add_with_json("doctor", "Says why shares do not arrive, and what to do.", " --fix", [&] {
    return console::doctor(repair, as_json);
  })->add_flag("--fix", repair, "Do what is safe to do");

  add_with_json("forget", "Removes the copies of what was shared last.", "",
                [&] { return console::forget(as_json); });

  std::string folder;
  std::string form = "xml";
  const std::map<std::string, PropertyListForm> forms{{"xml", PropertyListForm::kXml},
                                                      {"binary", PropertyListForm::kBinary},
                                                      {"old", PropertyListForm::kOld}};
  CLI::App* const sample =
      add("sample-container", "Writes what a mail application shares, made up, into a folder.",
          "quollctl sample-container --form binary /tmp/containers",
          [&] { return console::sample_container(folder, forms.at(form)); });
  sample->add_option("FOLDER", folder, "The folder that holds the group containers")->required();
  sample->add_option("--form", form, "How to write the property lists: xml, binary or old")
      ->type_name("FORM")
      ->check([&](const std::string& name) {
        return forms.contains(name) ? "" : "it takes xml, binary or old";
      });

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const bool is_asked_for = error.get_exit_code() == 0;  // help, or the version
    return is_asked_for ? app.exit(error) : wrong_usage(app, argc, argv, error);
  }
  return chosen();
}

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "apps/command_line/command_line.h"
#include "apps/console/commands.h"
#include "quoll/message/command_launcher.h"

namespace {

constexpr const char* kExamples = R"(Examples:
    quollctl doctor                     why did a share not arrive?
    quollctl forget                     removes the copies of what was shared last
    quollctl show 'quoll://compose?subject=Hi'
    quollctl accounts --json)";

}  // namespace

int main(int argc, char** argv) {
  using quoll::command_line::CommandLine;
  using quoll::console::PropertyListForm;
  namespace console = quoll::console;
  CommandLine line("quollctl", QUOLL_VERSION,
                   "Drives and explains what the share extension's library does.", kExamples);
  std::function<int()> chosen;
  bool as_json = false;
  const auto add = [&](const char* name, const char* text, const std::string& example,
                       std::function<int()> run) {
    return line.subcommand(name, text, "Example:\n    " + example,
                           [&chosen, run = std::move(run)] { chosen = run; });
  };
  const auto add_with_json = [&](const char* name, const char* text, const char* arguments,
                                 std::function<int()> run) {
    CommandLine command =
        add(name, text, std::string("quollctl ") + name + arguments, std::move(run));
    command.flag("--json", as_json, "Print JSON");
    return command;
  };

  add("call", "Answers JSON requests on standard input, one a line, by JSON replies.",
      R"(echo '{"op": "URLEncodedString", "on": "a b"}' | quollctl call)", console::call);

  std::string url;
  add_with_json("show", "Prints what a quoll:// command URL says.", " 'quoll://compose?subject=Hi'",
                [&] { return console::show(url, as_json); })
      .value("URL", url, "The command URL")
      .required();
  add_with_json("url", "Takes a URL apart.", " 'https://example.org/a?b=c'",
                [&] { return console::url(url, as_json); })
      .value("URL", url, "The URL")
      .required();

  add_with_json("accounts", "Prints the shared mail accounts.", " --json",
                [&] { return console::accounts(as_json); });
  add_with_json("contacts", "Prints the shared address book.", " --json",
                [&] { return console::contacts(as_json); });

  std::optional<std::string> moment;
  add_with_json("date", "Prints a date in the forms that are shared.", " 2024-03-07T10:15:00Z",
                [&] { return console::date(moment, as_json); })
      .value("DATE", moment,
             "A date like 2024-03-07T10:15:00Z or seconds since 1970; now unless given");

  std::string message;
  add_with_json("render", "Prints a message as HTML.", " message.plist",
                [&] { return console::render(message, as_json); })
      .value("FILE", message,
             "A message: a property list, or JSON of its fields; - for standard input")
      .required();

  std::string command;
  std::vector<std::string> messages;
  bool background = false;
  CommandLine launch =
      add_with_json("launch", "Hands a command to the mail application.", " reply message.plist",
                    [&] { return console::launch(command, messages, background, as_json); });
  launch.value("COMMAND", command, "What to do with the messages")
      .required()
      .one_of({quoll::commandArchive, quoll::commandDelete, quoll::commandReply,
               quoll::commandMessage, quoll::commandCompose, quoll::commandSend,
               quoll::commandOpen});
  launch.values("FILE", messages, "The messages, as for render").required();
  launch.flag("--background", background, "Leave the application in the background");

  bool repair = false;
  add_with_json("doctor", "Says why shares do not arrive, and what to do.", " --fix", [&] {
    return console::doctor(repair, as_json);
  }).flag("--fix", repair, "Do what is safe to do");

  add_with_json("forget", "Removes the copies of what was shared last.", "",
                [&] { return console::forget(as_json); });

  std::string folder;
  std::string form = "xml";
  const std::map<std::string, PropertyListForm> forms{{"xml", PropertyListForm::kXml},
                                                      {"binary", PropertyListForm::kBinary},
                                                      {"old", PropertyListForm::kOld}};
  CommandLine sample =
      add("sample-container", "Writes what a mail application shares, made up, into a folder.",
          "quollctl sample-container --form binary /tmp/containers",
          [&] { return console::sample_container(folder, forms.at(form)); });
  sample.value("FOLDER", folder, "The folder that holds the group containers").required();
  sample.value("--form", form, "How to write the property lists: xml, binary or old")
      .placeholder("FORM")
      .one_of({"xml", "binary", "old"});

  if (const auto status = line.read(argc, argv)) {
    return *status;
  }
  return chosen();
}

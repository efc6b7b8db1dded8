#include <CLI/CLI.hpp>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "apps/console/commands.h"
#include "quoll/message/command_launcher.h"

int main(int argc, char** argv) {
  CLI::App app("Drives and explains what the share extension's library does.", "quollctl");
  app.require_subcommand(1);

  app.add_subcommand("call",
                     "Answers JSON requests on standard input, one a line, by JSON replies.");

  CLI::App* show = app.add_subcommand("show", "Prints what a quoll:// command URL says.");
  std::string url;
  bool as_json = false;
  show->add_option("URL", url, "The command URL")->required();
  show->add_flag("--json", as_json, "Print JSON");

  CLI::App* take_apart = app.add_subcommand("url", "Takes a URL apart.");
  take_apart->add_option("URL", url, "The URL")->required();
  take_apart->add_flag("--json", as_json, "Print JSON");

  CLI::App* accounts = app.add_subcommand("accounts", "Prints the shared mail accounts.");
  accounts->add_flag("--json", as_json, "Print JSON");
  CLI::App* contacts = app.add_subcommand("contacts", "Prints the shared address book.");
  contacts->add_flag("--json", as_json, "Print JSON");
  CLI::App* date = app.add_subcommand("date", "Prints a date in the forms that are shared.");
  std::optional<std::string> moment;
  date->add_option("DATE", moment,
                   "A date like 2024-03-07T10:15:00Z or seconds since 1970; now unless given");
  date->add_flag("--json", as_json, "Print JSON");

  CLI::App* render = app.add_subcommand("render", "Prints a message as HTML.");
  std::string message;
  render
      ->add_option("FILE", message,
                   "A message: a property list, or JSON of its fields; - for standard input")
      ->required();
  render->add_flag("--json", as_json, "Print JSON");

  CLI::App* launch = app.add_subcommand("launch", "Hands a command to the mail application.");
  std::string command;
  std::vector<std::string> messages;
  bool background = false;
  launch->add_option("COMMAND", command, "What to do with the messages")
      ->required()
      ->check(CLI::IsMember(std::vector<std::string_view>{
          quoll::commandArchive, quoll::commandDelete, quoll::commandReply, quoll::commandMessage,
          quoll::commandCompose, quoll::commandSend, quoll::commandOpen}));
  launch->add_option("FILE", messages, "The messages, as for render")->required();
  launch->add_flag("--background", background, "Leave the application in the background");
  launch->add_flag("--json", as_json, "Print JSON");

  CLI::App* doctor = app.add_subcommand("doctor", "Says why shares do not arrive, and what to do.");
  bool repair = false;
  doctor->add_flag("--fix", repair, "Do what is safe to do");
  doctor->add_flag("--json", as_json, "Print JSON");

  CLI::App* sample = app.add_subcommand(
      "sample-container", "Writes what a mail application shares, made up, into a folder.");
  std::string folder;
  sample->add_option("FOLDER", folder, "The folder that holds the group containers")->required();
  auto form = quoll::console::PropertyListForm::kXml;
  sample->add_option("--form", form, "How to write the property lists: xml, binary or old")
      ->transform(CLI::CheckedTransformer(std::map<std::string, quoll::console::PropertyListForm>{
          {"xml", quoll::console::PropertyListForm::kXml},
          {"binary", quoll::console::PropertyListForm::kBinary},
          {"old", quoll::console::PropertyListForm::kOld}}));

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    constexpr int kUsage = 2;
    return app.exit(error) == 0 ? 0 : kUsage;
  }
  if (take_apart->parsed()) {
    return quoll::console::url(url, as_json);
  }
  if (accounts->parsed()) {
    return quoll::console::accounts(as_json);
  }
  if (contacts->parsed()) {
    return quoll::console::contacts(as_json);
  }
  if (date->parsed()) {
    return quoll::console::date(moment, as_json);
  }
  if (render->parsed()) {
    return quoll::console::render(message, as_json);
  }
  if (launch->parsed()) {
    return quoll::console::launch(command, messages, background, as_json);
  }
  if (doctor->parsed()) {
    return quoll::console::doctor(repair, as_json);
  }
  if (sample->parsed()) {
    return quoll::console::sample_container(folder, form);
  }
  return show->parsed() ? quoll::console::show(url, as_json) : quoll::console::call();
}

#include <CLI/CLI.hpp>
#include <string>

#include "commands.h"

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

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    constexpr int kUsage = 2;
    return app.exit(error) == 0 ? 0 : kUsage;
  }
  return show->parsed() ? quoll::quollctl::show(url, as_json) : quoll::quollctl::call();
}

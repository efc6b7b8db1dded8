#include "arguments.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "quoll/host/report.h"

namespace quoll {

namespace {

constexpr const char* kFooter =
    "\nAn ITEM is a web link, a path, a file URL, a data: URL, or - for the bytes on standard\n"
    "input. After -- everything is an ITEM. With --null standard input is a list whose parts end\n"
    "with zero bytes: first the texts given as -, then more ITEMs.\n"
    "\nExit status: 0 opened, 1 not opened, 2 wrong usage, 3 opened without something.";

/// What no single option can check by itself; empty when the command line makes sense.
std::string complaint(const host::Wanted& wanted) {
  const auto& items = wanted.items;
  if (!wanted.text && !wanted.html && items.empty() && !wanted.has_list) {
    return "nothing to share was given";
  }
  const auto as_items = std::count(items.begin(), items.end(), "-");
  const auto as_texts = (wanted.title == "-") + (wanted.text == "-") + (wanted.html == "-");
  return as_items + (wanted.has_list ? 1 : as_texts) > 1 ? "standard input can be used only once"
                                                         : "";
}

/// The parser takes names such as "[a,b]", "{}" and "%%" apart. It leaves alone what begins with
/// this, so every argument that is no option gets it, and every value loses it again.
constexpr char kMark = '\1';

/// The arguments as the parser wants them: the last one first.
std::vector<std::string> marked(int argc, const char* const* argv) {
  std::vector<std::string> out;
  for (int i = argc - 1; i > 0; --i) {
    const std::string argument = argv[i];
    out.push_back(argument.starts_with('-') ? argument : kMark + argument);
  }
  return out;
}

void unmark(std::string& value) {
  if (value.starts_with(kMark)) {
    value.erase(0, 1);
  }
}

void unmark(std::optional<std::string>& value) {
  if (value) {
    unmark(*value);
  }
}

int wrong_usage(const std::string& why) {
  std::cerr << "quoll-share: " << why << "; see quoll-share --help\n";
  return static_cast<int>(host::ExitCode::kUsage);
}

}  // namespace

std::variant<Arguments, int> parse(int argc, const char* const* argv) {
  Arguments arguments;
  host::Wanted& wanted = arguments.wanted;
  CLI::App app("Shares links, files, images and text as one mail draft.", "quoll-share");
  app.footer(kFooter);
  app.add_option("--title", wanted.title, "The draft's subject, used when a web link is shared");
  auto* const text = app.add_option("--text", wanted.text, "Plain text, or - for standard input");
  auto* const html = app.add_option("--html", wanted.html, "Styled text, or - for standard input");
  text->excludes(html);
  app.add_flag("-0,--null", wanted.has_list, "Read more ITEMs, each ended by a zero byte");
  app.add_flag("--print", arguments.print, "Print the command URL instead of opening it");
  app.add_flag("--verbose", arguments.verbose, "Write the log to standard error too");
  app.add_flag("--notify", arguments.notify, "Show on the desktop what went wrong");
  app.add_option("ITEM", wanted.items, "What to share");
  try {
    app.parse(marked(argc, argv));
  } catch (const CLI::Success& asked_for_help) {
    return app.exit(asked_for_help);
  } catch (const CLI::ParseError& error) {
    return wrong_usage(error.what());
  }
  for (auto* const value : {&wanted.title, &wanted.text, &wanted.html}) {
    unmark(*value);
  }
  for (std::string& item : wanted.items) {
    unmark(item);
  }
  const std::string why = complaint(wanted);
  if (!why.empty()) {
    return wrong_usage(why);
  }
  return arguments;
}

}  // namespace quoll

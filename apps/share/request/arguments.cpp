#include "apps/share/request/arguments.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/command_line/command_line.h"
#include "quoll/foundation/printable.h"

namespace quoll::share {

namespace {

constexpr const char* kFooter =
    "\nAn ITEM is a web link, a path, a file URL, a data: URL, or - for the bytes on standard\n"
    "input. A folder becomes one ZIP file. After -- everything is an ITEM. With --null standard\n"
    "input is a list whose parts end with zero bytes: first the texts given as -, then more "
    "ITEMs.\n"
    "\nExamples:\n"
    "  quoll-share https://example.org/ report.pdf --title \"The report\"\n"
    "  find . -name '*.pdf' -print0 | quoll-share --null\n"
    "\nExit status: 0 opened, 1 not opened, 2 wrong usage, 3 opened without something.";

/// What no single option can check by itself; empty when the command line makes sense.
std::string complaint(const Arguments& arguments) {
  const ShareRequest& request = arguments.request;
  const auto& items = request.items;
  const bool is_empty = !request.text && !request.html && items.empty() &&
                        request.descriptor_items.empty() && !request.has_list;
  if (request.text && request.html) {
    return "give one of --text, --html";
  }
  if (arguments.progress >= 0 && (arguments.notify || fcntl(arguments.progress, F_GETFD) < 0)) {
    return "--progress takes the number of an open pipe, and not together with --notify";
  }
  if (arguments.print && arguments.json) {
    return "give one of --print, --json";
  }
  if (request.has_clipboard) {
    return is_empty ? "" : "with --clipboard nothing else is shared";
  }
  if (is_empty) {
    return "nothing to share was given";
  }
  const auto as_items = std::count(items.begin(), items.end(), "-");
  const auto as_texts = (request.title == "-") + (request.envelope.subject == "-") +
                        (request.text == "-") + (request.html == "-");
  return as_items + (request.has_list ? 1 : as_texts) > 1 ? "standard input can be used only once"
                                                          : "";
}

/// The parser takes names such as "[a,b]", "{}" and "%%" apart. It leaves alone what begins with
/// this, so every argument that is no option gets it, and every value loses it again.
constexpr char kMark = '\1';

std::vector<std::string> marked(int argc, const char* const* argv) {
  std::vector<std::string> out;
  for (int i = 1; i < argc; ++i) {
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

/// Reads "N", "N:TYPE" or "N:TYPE:NAME", a name may hold anything, and adds it to the request.
/// Answers what is wrong with it; empty when all is well.
std::string add_descriptor(ShareRequest& request, const std::string& text) {
  constexpr int kFirst = 3;  // the first descriptor that is no standard one
  constexpr int kMost = 1 << 30;
  int number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  std::string_view rest = text;
  rest.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (error != std::errc() || number < kFirst || number > kMost ||
      !(rest.empty() || rest.front() == ':')) {
    return "--descriptor takes a number above 2, a type and a name: N:TYPE:NAME";
  }
  const bool is_repeated = std::ranges::any_of(request.descriptor_items, [&](const auto& other) {
    return other.descriptor.get() == number;
  });
  if (is_repeated) {
    return "descriptor " + std::to_string(number) + " is given twice";
  }
  if (fcntl(number, F_GETFD) < 0) {  // later another file may get the number
    return "descriptor " + std::to_string(number) + " is not open";
  }
  DescriptorItem& item = request.descriptor_items.emplace_back();
  item.descriptor.reset(number);
  if (!rest.empty()) {
    const std::size_t colon = std::min(rest.find(':', 1), rest.size());
    item.media_type = rest.substr(1, colon - 1);
    item.name = rest.substr(std::min(colon + 1, rest.size()));
  }
  return "";
}

/// Answers what is wrong with the recipients; empty when all is well. One that is "-" is looked at
/// when it was read.
std::string complaint_about_recipients(const ShareRequest& request) {
  const Envelope& envelope = request.envelope;
  for (const auto* const addresses : {&envelope.to, &envelope.cc, &envelope.bcc}) {
    for (const std::string& address : *addresses) {
      const bool is_read = address == "-";
      const std::string why = is_read ? "" : why_no_recipient(address);
      if (!why.empty()) {
        return "the recipient \"" + foundation::printable(address) + "\": " + why;
      }
      if (is_read && !request.has_list) {
        return "a recipient can be - only with --null";
      }
    }
  }
  return "";
}

}  // namespace

std::variant<Arguments, int> parse(int argc, const char* const* argv) {
  Arguments arguments;
  ShareRequest& request = arguments.request;
  command_line::CommandLine line("quoll-share", QUOLL_VERSION,
                                 "Shares links, files, images and text as one mail draft.",
                                 kFooter);
  Envelope& envelope = request.envelope;
  struct Recipients {
    const char* option;
    std::vector<std::string>& addresses;
    const char* words;
  };
  const std::vector<Recipients> recipients{
      {"--to", envelope.to, "A recipient; give it once for each"},
      {"--cc", envelope.cc, "The same for those who get a copy"},
      {"--bcc", envelope.bcc, "The same for those whom the others do not see"}};
  for (const auto& [option, addresses, words] : recipients) {
    line.values(option, addresses, words).placeholder("ADDRESS").one_value();
  }
  line.value("--subject", envelope.subject, "The draft's subject");
  line.value("--title", request.title,
             "What is shared is called this; without --subject the subject");
  line.value("--text", request.text, "Plain text, or - for standard input");
  line.value("--html", request.html, "Styled text instead, or - for standard input");
  line.flag("-0,--null", request.has_list, "Read more ITEMs, each ended by a zero byte");
  line.flag("--clipboard", request.has_clipboard, "Share what the clipboard holds");
  std::vector<std::string> descriptors;
  std::string progress;
  line.values("--descriptor", descriptors, "The bytes of an open descriptor, as a file")
      .placeholder("N[:TYPE[:NAME]]")
      .one_value();
  line.value("--progress", progress, "Write the progress to a pipe; closing it cancels")
      .placeholder("N");
  line.flag("--print", arguments.print, "Print the command URL instead of opening it");
  line.flag("--json", arguments.json, "Print what came of it for programs, as JSON");
  line.flag("--verbose", arguments.verbose, "Write each step and its time to standard error");
  line.flag("--notify", arguments.notify, "Show on the desktop what went wrong");
  line.values("ITEM", request.items, "What to share");
  if (const auto status = line.read(marked(argc, argv))) {
    return *status;
  }
  for (auto* const value : {&request.title, &envelope.subject, &request.text, &request.html}) {
    unmark(*value);
  }
  for (const Recipients& some : recipients) {
    std::ranges::for_each(some.addresses, [](std::string& address) { unmark(address); });
  }
  for (std::string& item : request.items) {
    unmark(item);
  }
  for (std::string& descriptor : descriptors) {
    unmark(descriptor);
    if (const std::string why = add_descriptor(request, descriptor); !why.empty()) {
      return line.wrong_usage(why);
    }
  }
  unmark(progress);
  if (!progress.empty()) {
    const auto read =
        std::from_chars(progress.data(), progress.data() + progress.size(), arguments.progress);
    if (read.ptr != progress.data() + progress.size() || arguments.progress <= STDERR_FILENO) {
      return line.wrong_usage("--progress takes the number of a descriptor above 2");
    }
  }
  for (const std::string& why : {complaint_about_recipients(request), complaint(arguments)}) {
    if (!why.empty()) {
      return line.wrong_usage(why);
    }
  }
  return arguments;
}

}  // namespace quoll::share

// Has any command written by what the confined writer runs, and takes its fields to the arguments
// of each mail client. The command is refused, or: the headers of the message are those of a draft
// and no others; the fields are clean; and no argument has a control character, is an option that
// was not meant, or holds what a client would decode.

#include <fcntl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "apps/compose/clean_text.h"
#include "apps/compose/client_arguments.h"
#include "apps/compose/write_message.h"
#include "apps/compose/writer_result.h"
#include "fuzz/require.h"
#include "fuzz/script.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/percent.h"
#include "quoll/foundation/text.h"
#include "tests/compose/taken_folder.h"

namespace {

using namespace quoll;
using compose::DraftFields;
using fuzz::require;

/// A command that has every field, or the bytes themselves.
std::string command_of(fuzz::Script& script) {
  if (script.choice(4) == 0) {
    return "quoll://compose?" + std::string(script.rest());
  }
  std::string url = "quoll://compose?";
  for (const char* const key : {"to", "subject", "cc", "bcc", "from", "plainBody", "htmlBody"}) {
    const std::string text = foundation::utf8_with_escapes(script.text(255));
    url += std::string(key) + "=" + foundation::percent_encode(text) + "&";
  }
  return url;
}

void check_headers(std::string_view message) {
  const std::set<std::string_view> known{
      "X-Unsent",     "Subject",      "From",
      "To",           "Cc",           "Bcc",
      "MIME-Version", "Content-Type", "Content-Transfer-Encoding"};
  std::set<std::string_view> seen;
  for (;;) {
    const std::string_view line = message.substr(0, message.find("\r\n"));
    message.remove_prefix(line.size() + 2);
    require(line.size() <= 998 && compose::is_clean(line, "\t") && foundation::is_utf8(line));
    if (line.empty()) {
      return;
    }
    require(line.find_first_not_of(" \t") != std::string_view::npos);
    if (line[0] != ' ' && line[0] != '\t') {
      const std::string_view name = line.substr(0, line.find(':'));
      require(known.contains(name) && seen.insert(name).second);
    }
  }
}

void check_line(const std::string& text, bool may_be_empty) {
  require(may_be_empty || !text.empty());
  require(foundation::is_utf8(text) && compose::is_clean(text));
  require(text.find("=?") == std::string::npos);
}

void check_fields(const DraftFields& fields) {
  check_line(fields.subject, true);
  require(foundation::is_utf8(fields.text) && compose::is_clean(fields.text, "\n\t"));
  for (const auto* list : {&fields.to, &fields.cc, &fields.bcc}) {
    for (const std::string& address : *list) {
      check_line(address, false);
      require(address.find('@') != std::string::npos);
    }
  }
}

void check_arguments(gio::DraftWay way, const DraftFields& fields) {
  const auto arguments =
      compose::client_arguments(way, fields, {.text = "/text", .attachments = {"/file"}});
  const std::set<std::string> options{"--composer", "--compose", "--attach", "-s", "-i",
                                      "-c",         "-b",        "-a",       "--"};
  const auto end = std::ranges::find(arguments, "--");
  for (auto at = arguments.begin(); at != arguments.end(); ++at) {
    require(foundation::is_utf8(*at) && compose::is_clean(*at, "\n\t"));
    require(at->find('\n') == std::string::npos || at->starts_with("--body="));
    const bool is_value = at != arguments.begin() && at[-1].size() == 2 && at[-1][0] == '-';
    const bool is_meant = options.contains(*at) || at->find('=') != std::string::npos;
    require(!at->starts_with('-') || is_value || is_meant || at > end);
  }
  if (way == gio::DraftWay::kMutt) {
    require(static_cast<std::size_t>(arguments.end() - end) == fields.to.size() + 1);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  compose::prepare_to_write();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static test::TakenFolder folder;
  fuzz::Script script({data, size});
  folder.around().write("taken/command", command_of(script));
  folder.open_both();
  try {
    compose::write_message(folder.taken(), folder.output());
  } catch (const foundation::NSException& refused) {
    require(*refused.what() != '\0');
    return 0;
  }
  const DraftFields fields = compose::take_fields(folder.output());
  check_headers(folder.written());
  check_fields(fields);
  for (const auto way : {gio::DraftWay::kEvolution, gio::DraftWay::kKMail, gio::DraftWay::kClaws,
                         gio::DraftWay::kMutt}) {
    check_arguments(way, fields);
  }
  return 0;
}

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "apps/console/commands.h"
#include "apps/console/operations/json.h"
#include "apps/console/operations/write_value.h"
#include "apps/console/output.h"
#include "apps/console/program_desktop.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/message/command_url.h"
#include "quoll/message/received_command.h"

namespace quoll::console {

namespace {

namespace fs = std::filesystem;

/// The first line of a body that is not empty, cut at a sensible length.
std::string excerpt(std::string_view body) {
  constexpr std::size_t kLongest = 160;
  const std::size_t begin = std::min(body.find_first_not_of(" \t\r\n"), body.size());
  body.remove_prefix(begin);
  std::string_view line = body.substr(0, body.find_first_of("\r\n"));
  line = foundation::whole_characters(line, kLongest);
  return std::string(line) + (line.size() < body.size() ? " ..." : "");
}

/// True for a path in the staging folder that leads through no link. A receiver takes no other, and
/// nothing is told of any other.
bool is_staged(const std::string& path) {
  const auto data_path = foundation::file_system_path(ExtensionUtilities::GroupDataPath());
  if (!data_path) {
    return false;
  }
  const fs::path staging = fs::path(*data_path) / container::layout::staging;
  const std::string above = staging.string() + "/";
  if (!path.starts_with(above) || fs::path(path).lexically_normal() != path) {
    return false;
  }
  std::error_code error;
  const fs::path real = fs::canonical(path, error);
  return error || real == fs::canonical(staging, error) / path.substr(above.size());
}

Json attachment(const std::string& path) {
  Json entry{{"path", path}, {"size", nullptr}};
  std::error_code error;
  if (!is_staged(path)) {
    entry["staged"] = false;
  } else if (fs::is_directory(path, error)) {
    entry["folder"] = true;
  } else if (const auto size = fs::file_size(path, error); !error) {
    entry["size"] = size;
  }
  return entry;
}

/// The parameters that do not belong to a message, for instance those of "archive".
Json other_parameters(const ReceivedCommand& command) {
  Json others = Json::object();
  for (const auto& [key, value] : command.parameters) {
    if (!command_url::is_message_key(key)) {
      append(others, key, write_value(value));
    }
  }
  return others;
}

Json summary(const ReceivedCommand& command) {
  const auto& message = command.message;
  Json out{{"command", command.command},
           {"account", write_value(message->account())},
           {"from", write_value(message->from())},
           {"to", write_value(message->toString())},
           {"cc", write_value(message->ccString())},
           {"bcc", write_value(message->bccString())},
           {"subject", write_value(message->subject())},
           {"plainBody", write_value(message->plainBody())},
           {"htmlBody", write_value(message->htmlBody())},
           {"attachments", Json::array()}};
  for (const std::string& path : command.attachments) {
    out["attachments"].push_back(attachment(path));
  }
  out["parameters"] = other_parameters(command);
  return out;
}

std::string size_words(const Json& attachment) {
  if (attachment.contains("staged")) {
    return "not in the staging folder";
  }
  if (attachment.contains("folder")) {
    return "a folder";
  }
  return attachment["size"].is_null()
             ? "missing"
             : std::to_string(attachment["size"].get<std::uint64_t>()) + " bytes";
}

constexpr std::size_t kColumn = 11;

void print_summary(const Json& summary) {
  for (const char* key : {"command", "account", "from", "to", "cc", "bcc", "subject"}) {
    if (summary[key].is_string()) {
      print_line(std::string(key) + ":", kColumn, summary[key].get_ref<const std::string&>());
    }
  }
  for (const auto& [key, label] :
       {std::pair{"plainBody", "text:"}, std::pair{"htmlBody", "html:"}}) {
    if (const auto& body = summary[key].get_ref<const std::string&>(); !body.empty()) {
      print_line(label, kColumn, excerpt(body));
    }
  }
  for (const Json& attachment : summary["attachments"]) {
    print_line("attached:", kColumn,
               attachment["path"].get<std::string>() + " (" + size_words(attachment) + ")");
  }
  for (const auto& [key, value] : summary["parameters"].items()) {
    print_line(foundation::printable(key) + ":", kColumn, value.get<std::string>());
  }
}

}  // namespace

int show(const std::string& text, bool as_json) {
  const platform::ScopedDesktop desktop(reading_desktop());
  try {
    const Json told = summary(read_received_command(text));
    if (as_json) {
      print_json(told);
    } else {
      print_summary(told);
    }
  } catch (const foundation::NSException& exception) {
    return complain(excerpt(text) + ": " + exception.reason());
  }
  return finish();
}

}  // namespace quoll::console

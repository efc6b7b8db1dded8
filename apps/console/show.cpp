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
#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/message/command_url.h"
#include "quoll/message/extension_message.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::console {

namespace {

using foundation::NSURL;
using foundation::Value;

/// The first line of a body that is not empty, cut at a sensible length.
std::string excerpt(std::string_view body) {
  constexpr std::size_t kLongest = 160;
  const std::size_t begin = std::min(body.find_first_not_of(" \t\r\n"), body.size());
  body.remove_prefix(begin);
  std::string_view line = body.substr(0, body.find_first_of("\r\n"));
  line = foundation::whole_characters(line, kLongest);
  return std::string(line) + (line.size() < body.size() ? " ..." : "");
}

Json attachment(const Value& path) {
  const std::string text = path.description();
  Json entry{{"path", text}, {"size", nullptr}};
  std::error_code error;
  if (std::filesystem::is_directory(text, error)) {
    entry["folder"] = true;
    return entry;
  }
  if (const auto size = std::filesystem::file_size(text, error); !error) {
    entry["size"] = size;
  }
  return entry;
}

/// The parameters that do not belong to a message, for instance those of "archive".
Json other_parameters(const NSURL& url) {
  Json others = Json::object();
  const auto parameters = RequestUtils::URLQueryParameters(url.absoluteString());
  for (const auto& [key, value] : parameters) {
    if (!command_url::is_message_key(key)) {
      append(others, key, write_value(value));
    }
  }
  return others;
}

Json summary(const std::shared_ptr<NSURL>& url) {
  const auto message = ExtensionMessage::ExtensionMessageWithUrl(url);
  Json out{{"command", url->host().value_or("")},
           {"account", write_value(message->account())},
           {"from", write_value(message->from())},
           {"to", write_value(message->toString())},
           {"cc", write_value(message->ccString())},
           {"bcc", write_value(message->bccString())},
           {"subject", write_value(message->subject())},
           {"plainBody", write_value(message->plainBody())},
           {"htmlBody", write_value(message->htmlBody())},
           {"attachments", Json::array()}};
  for (const Value& path : message->attachments()) {
    out["attachments"].push_back(attachment(path));
  }
  out["parameters"] = other_parameters(*url);
  return out;
}

std::string size_words(const Json& attachment) {
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
  const auto url = NSURL::URLWithString(text);
  if (!url || url->scheme() != "quoll" || url->host().value_or("").empty()) {
    return complain(excerpt(text) +
                    " is not a command URL: it must look like quoll://COMMAND?QUERY");
  }
  try {
    const Json told = summary(url);
    if (as_json) {
      print_json(told);
    } else {
      print_summary(told);
    }
  } catch (const foundation::NSException& exception) {
    return complain(excerpt(text) + " cannot be read: " + exception.reason());
  }
  return finish();
}

}  // namespace quoll::console

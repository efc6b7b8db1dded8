#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "apps/console/commands.h"
#include "apps/console/operations/json.h"
#include "apps/console/operations/write_value.h"
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

using console::Json;
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
      console::append(others, key, console::write_value(value));
    }
  }
  return others;
}

Json summary(const std::shared_ptr<NSURL>& url) {
  const auto message = ExtensionMessage::ExtensionMessageWithUrl(url);
  Json out{{"command", url->host().value_or("")},
           {"account", console::write_value(message->account())},
           {"from", console::write_value(message->from())},
           {"to", console::write_value(message->toString())},
           {"cc", console::write_value(message->ccString())},
           {"bcc", console::write_value(message->bccString())},
           {"subject", console::write_value(message->subject())},
           {"plainBody", console::write_value(message->plainBody())},
           {"htmlBody", console::write_value(message->htmlBody())},
           {"attachments", Json::array()}};
  for (const Value& path : message->attachments()) {
    out["attachments"].push_back(attachment(path));
  }
  out["parameters"] = other_parameters(*url);
  return out;
}

void print_line(std::string_view label, std::string_view text) {
  std::cout << label << std::string(label.size() < 11 ? 11 - label.size() : 1, ' ')
            << foundation::printable(text) << '\n';
}

std::string size_words(const Json& attachment) {
  if (attachment.contains("folder")) {
    return "a folder";
  }
  return attachment["size"].is_null()
             ? "missing"
             : std::to_string(attachment["size"].get<std::uint64_t>()) + " bytes";
}

void print_summary(const Json& summary) {
  for (const char* key : {"command", "account", "from", "to", "cc", "bcc", "subject"}) {
    if (summary[key].is_string()) {
      print_line(std::string(key) + ":", summary[key].get_ref<const std::string&>());
    }
  }
  for (const auto& [key, label] :
       {std::pair{"plainBody", "text:"}, std::pair{"htmlBody", "html:"}}) {
    if (const auto& body = summary[key].get_ref<const std::string&>(); !body.empty()) {
      print_line(label, excerpt(body));
    }
  }
  for (const Json& attachment : summary["attachments"]) {
    print_line("attached:",
               attachment["path"].get<std::string>() + " (" + size_words(attachment) + ")");
  }
  for (const auto& [key, value] : summary["parameters"].items()) {
    print_line(foundation::printable(key) + ":", value.get<std::string>());
  }
}

int refuse(std::string_view text, std::string_view why) {
  std::cerr << "quollctl: " << foundation::printable(excerpt(text)) << " "
            << foundation::printable(why) << '\n';
  return 1;
}

}  // namespace

int show(const std::string& text, bool as_json) {
  const auto url = NSURL::URLWithString(text);
  if (!url || url->scheme() != "quoll" || url->host().value_or("").empty()) {
    return refuse(text, "is not a command URL: it must look like quoll://COMMAND?QUERY");
  }
  try {
    const Json told = summary(url);
    if (as_json) {
      std::cout << console::json_line(told) << '\n';
    } else {
      print_summary(told);
    }
  } catch (const foundation::NSException& exception) {
    return refuse(text, "cannot be read: " + exception.reason());
  }
  return std::cout.flush() ? 0 : 1;
}

}  // namespace quoll::console

#include "apps/compose/compose_command.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <utility>

#include "apps/compose/cannot_compose.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/text.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/command_url.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::compose {
namespace {

std::uint64_t number_in(std::string_view key) {
  constexpr auto kLast = std::numeric_limits<std::uint64_t>::max();
  key.remove_prefix(command_url::attachment_prefix.size());
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), number);
  return error == std::errc() && end == key.data() + key.size() ? number : kLast;
}

// The paths in the order in which they were shared, which is in the numbers of their keys. The
// record has them in the order of the URL.
std::vector<std::string> attachments_of(const foundation::NSURL& url) {
  std::vector<std::pair<std::uint64_t, std::string>> numbered;
  const auto parameters = RequestUtils::URLQueryParameters(url.absoluteString());
  for (const auto& [key, value] : parameters) {
    if (key.starts_with(command_url::attachment_prefix)) {
      numbered.emplace_back(number_in(key), text_of_field(value));
    }
  }
  std::ranges::stable_sort(numbered, {}, &std::pair<std::uint64_t, std::string>::first);
  std::vector<std::string> paths;
  paths.reserve(numbered.size());
  for (auto& [number, path] : numbered) {
    paths.push_back(std::move(path));
  }
  return paths;
}

}  // namespace

std::string text_of_field(const foundation::Value& field) {
  const std::string* text = field.text();
  return text != nullptr ? *text : std::string();
}

ComposeCommand read_compose_command(std::string_view text) {
  const auto url = foundation::NSURL::URLWithString(text);
  if (!url || foundation::ascii_lower_case(url->scheme().value_or("")) != "quoll") {
    throw CannotCompose("this is not a command URL of the form quoll://compose?...");
  }
  const std::string command = url->host().value_or("");
  if (command != commandCompose) {
    throw CannotCompose("the command \"" + command + "\" needs the mail application; only \"" +
                        std::string(commandCompose) + "\" is taken here");
  }
  try {
    return {.message = ExtensionMessage::ExtensionMessageWithUrl(url),
            .attachments = attachments_of(*url)};
  } catch (const foundation::NSException& exception) {
    throw CannotCompose("the command URL cannot be read: " + exception.reason());
  }
}

}  // namespace quoll::compose

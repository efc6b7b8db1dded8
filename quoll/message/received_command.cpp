#include "quoll/message/received_command.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <utility>

#include "quoll/foundation/exception.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/command_url.h"
#include "quoll/requestutils/url_query.h"

namespace quoll {

namespace {

constexpr std::string_view kBeginning = "quoll://";

std::string command_in(std::string_view text) {
  if (!text.starts_with(kBeginning)) {
    foundation::raise_invalid_argument(
        "this is not a command URL of the form quoll://COMMAND?QUERY");
  }
  if (!foundation::NSURL::URLWithString(text)) {
    foundation::raise_invalid_argument(
        "the command URL has a \"%\" that begins no escape, a second \"#\", or a character that "
        "has to be escaped");
  }
  text.remove_prefix(kBeginning.size());
  const std::string_view word = text.substr(0, text.find_first_of("?#"));
  const std::array commands{commandArchive, commandDelete, commandReply, commandMessage,
                            commandCompose, commandSend,   commandOpen};
  if (std::ranges::find(commands, word) == commands.end()) {
    foundation::raise_invalid_argument("\"" + std::string(word) + "\" is no command");
  }
  return std::string(word);
}

foundation::Dictionary parameters_in(std::string_view text) {
  try {
    return RequestUtils::URLQueryParameters(text);
  } catch (const foundation::NSException&) {  // tells of texts and dictionaries, not of this URL
    foundation::raise_invalid_argument(
        text.find('#') < text.find('?')
            ? "the command URL has a \"#\" before its \"?\""
            : "a part of the command URL is not UTF-8 text once its escapes are decoded");
  }
}

std::uint64_t number_in(std::string_view key) {
  constexpr auto kLast = std::numeric_limits<std::uint64_t>::max();
  key.remove_prefix(command_url::attachment_prefix.size());
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), number);
  return error == std::errc() && end == key.data() + key.size() ? number : kLast;
}

std::vector<std::string> attachments_in(const foundation::Dictionary& parameters) {
  std::vector<std::pair<std::uint64_t, std::string>> numbered;
  for (const auto& [key, value] : parameters) {
    if (const std::string* path = value.text();
        path != nullptr && key.starts_with(command_url::attachment_prefix)) {
      numbered.emplace_back(number_in(key), *path);
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

ReceivedCommand read_received_command(std::string_view text) {
  ReceivedCommand read{.command = command_in(text),
                       .parameters = parameters_in(text),
                       .message = nullptr,
                       .attachments = {}};
  read.message = command_url::message_of(read.parameters);
  read.attachments = attachments_in(read.parameters);
  return read;
}

}  // namespace quoll

#include "apps/share/plain_reason.h"

#include <algorithm>
#include <array>

#include "quoll/foundation/error.h"
#include "quoll/foundation/number_text.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {

namespace {

constexpr std::string_view kError = "Error Domain=";
constexpr std::string_view kCode = " Code=";

/// What stands in front of the events that a share logs.
constexpr std::array<std::string_view, 11> kOperations{
    "GetItemForExtension kUTTypeImage ",
    "GetItemForExtension kUTTypeURL ",
    "Error writing file shareFiles ",
    "Error writing file shareDatas ",
    "Exception shareFiles ",
    "Exception shareDatas ",
    "Error shareFiles ",
    "Error shareDatas ",
    "shareInit ",
    "loadItemForTypeIdentifier ",
    "openURLs ",
};

std::string_view after(std::string_view text, std::string_view mark) {
  const std::size_t position = text.find(mark);
  return position == std::string_view::npos ? std::string_view()
                                            : text.substr(position + mark.size());
}

/// The sentence of one printed error; a name in it may hold quotes of its own.
std::string_view sentence_of(std::string_view error) {
  const std::string_view quoted = after(error, " \"");
  const std::size_t end = quoted.find("\" UserInfo=");
  return quoted.substr(0, end != std::string_view::npos ? end : quoted.rfind('"'));
}

std::string without_operation(std::string_view line) {
  const auto* const operation =
      std::find_if(kOperations.begin(), kOperations.end(),
                   [&](std::string_view name) { return line.starts_with(name); });
  return std::string(line.substr(operation == kOperations.end() ? 0 : operation->size()));
}

}  // namespace

std::string plain_reason(std::string_view log_line) {
  // Names from strangers stand before what lies beneath an error, so the last one is the real one.
  const std::size_t last = log_line.rfind(kError);
  if (last == std::string_view::npos) {
    return foundation::printable(without_operation(log_line));
  }
  const std::string_view error = log_line.substr(last + kError.size());
  if (error.starts_with(foundation::NSPOSIXErrorDomain)) {
    const auto number = static_cast<int>(foundation::integer_of_text(after(error, kCode)));
    return number == 0 ? "unknown error" : posix::error_words(number);
  }
  const std::string_view sentence = sentence_of(error);
  return foundation::printable(sentence.empty() ? error : sentence);
}

int error_code(std::string_view log_line) {
  return static_cast<int>(foundation::integer_of_text(after(after(log_line, kError), kCode)));
}

}  // namespace quoll::share

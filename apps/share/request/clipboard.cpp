#include "apps/share/request/clipboard.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <vector>

#include "apps/share/request/clipboard_content.h"
#include "apps/share/request/clipboard_programs.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/subprocess.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

namespace {

using End = posix::ProgramAnswer::End;
/// None when there is something.
using Reason = std::optional<ClipboardTrouble>;

constexpr std::size_t kMebibyte = std::size_t{1} << 20;
constexpr std::size_t kLargestText = 64 * kMebibyte;
constexpr std::size_t kLargestPicture = 256 * kMebibyte;
constexpr std::size_t kLargestListOfTypes = kMebibyte;
constexpr const char* kEmpty = "it is empty";
constexpr const char* kNoAnswer = "the program that holds it does not answer";

/// How a program is asked.
struct ClipboardReader {
  ClipboardProgram program;
  std::vector<std::string> types;    ///< lists the types of what the clipboard holds
  std::vector<std::string> content;  ///< delivers the type that stands behind it
  std::vector<std::string_view> words_for_empty;
  const char* no_types;  ///< why no types are listed, when nothing is said
};

const std::array<ClipboardReader, 2>& readers() {
  static const std::array<ClipboardReader, 2> all{
      ClipboardReader{kWaylandClipboard,
                      {"wl-paste", "--list-types"},
                      {"wl-paste", "--no-newline", "--type"},
                      {"Nothing is copied", "No selection", "No suitable type"},
                      // The compositor has the list. Plasma's tells of none before the first copy.
                      "it is empty, or the desktop does not show it"},
      ClipboardReader{kXClipboard,
                      {"xclip", "-selection", "clipboard", "-o", "-t", "TARGETS"},
                      {"xclip", "-selection", "clipboard", "-o", "-t"},
                      {"not available"},
                      kNoAnswer},
  };
  return all;
}

enum class Kind { kFiles, kImage, kHtml, kText };

struct Type {
  std::string_view name;
  Kind kind;
};

/// The first of them that there is counts.
constexpr std::array kTypes{
    Type{"x-special/gnome-copied-files", Kind::kFiles},
    Type{"x-special/mate-copied-files", Kind::kFiles},
    Type{"text/uri-list", Kind::kFiles},
    Type{"image/png", Kind::kImage},
    Type{"text/html", Kind::kHtml},
    Type{"text/plain;charset=utf-8", Kind::kText},
    Type{"UTF8_STRING", Kind::kText},
    Type{"text/plain", Kind::kText},
};

Reason why_not(const ClipboardReader& reader, const posix::ProgramAnswer& answer) {
  switch (answer.end) {
    case End::kWell:
      return std::nullopt;
    case End::kSilent:
      return ClipboardTrouble{kNoAnswer};
    case End::kTooLong:
      return ClipboardTrouble{"what it holds is too long"};
    case End::kMissing:
      return ClipboardTrouble{std::string(reader.program.name) + " could not be started; install " +
                                  std::string(reader.program.package),
                              std::string(reader.program.name) + " could not be started"};
    case End::kBadly:
      break;
  }
  const bool is_empty = std::any_of(
      reader.words_for_empty.begin(), reader.words_for_empty.end(),
      [&](std::string_view words) { return answer.complaint.find(words) != std::string::npos; });
  if (is_empty) {
    return ClipboardTrouble{kEmpty};
  }
  const std::string failed = std::string(reader.program.name) + " failed";
  return answer.complaint.empty()
             ? ClipboardTrouble{failed}
             : ClipboardTrouble{std::string(reader.program.name) + " says: " + answer.complaint,
                                failed};
}

/// False when there is nothing in it.
bool add_image(ShareRequest& request, const std::string& bytes) {
  posix::UniqueFd held(memfd_create("clipboard", MFD_CLOEXEC));
  if (bytes.empty() || !held || !posix::write_all(held.get(), bytes)) {
    return false;
  }
  request.descriptor_items.push_back({std::move(held), "image/png", ""});
  return true;
}

bool add_text(std::optional<std::string>& part, const std::string& bytes) {
  std::string text = clipboard_text(bytes);
  if (text.empty()) {
    return false;
  }
  if (text == "-") {  // stands for standard input, which is not the clipboard
    text += ' ';
  }
  part = std::move(text);
  return true;
}

bool add(ShareRequest& request, Kind kind, const std::string& bytes) {
  switch (kind) {
    case Kind::kFiles:
      request.items = clipboard_items(clipboard_text(bytes));
      return !request.items.empty();
    case Kind::kImage:
      return add_image(request, bytes);
    case Kind::kHtml:
      return add_text(request.html, bytes);
    case Kind::kText:
      return add_text(request.text, bytes);
  }
  return false;
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(std::move(line));
  }
  return lines;
}

Reason add_from(const ClipboardReader& reader, ShareRequest& request,
                std::chrono::milliseconds read_timeout,
                std::chrono::steady_clock::time_point deadline) {
  const posix::ProgramAnswer listed =
      posix::run_program(reader.types, kLargestListOfTypes, read_timeout, deadline);
  if (listed.end == End::kSilent) {
    return ClipboardTrouble{reader.no_types, kNoAnswer};
  }
  if (auto reason = why_not(reader, listed)) {
    return reason;
  }
  const auto there = lines_of(listed.output);
  for (const Type& type : kTypes) {
    if (std::find(there.begin(), there.end(), type.name) == there.end()) {
      continue;
    }
    auto command = reader.content;
    command.emplace_back(type.name);
    const auto answer =
        posix::run_program(command, type.kind == Kind::kImage ? kLargestPicture : kLargestText,
                           read_timeout, deadline);
    auto reason = why_not(reader, answer);
    if (!reason && add(request, type.kind, answer.output)) {
      return std::nullopt;
    }
    if (reason && reason->why != kEmpty) {
      return reason;
    }
  }
  return ClipboardTrouble{there.empty() ? kEmpty : "it holds nothing that can be shared"};
}

}  // namespace

std::optional<ClipboardTrouble> add_clipboard(ShareRequest& request, const ClipboardTime& time) {
  const auto deadline = std::chrono::steady_clock::now() + time.in_all;
  Reason first;
  for (const ClipboardReader& reader : readers()) {
    const char* const display = std::getenv(reader.program.display);
    if (display == nullptr || *display == '\0') {
      continue;
    }
    auto reason = add_from(reader, request, time.read_timeout, deadline);
    if (!reason || reason->why == kEmpty) {
      return reason;
    }
    if (!first) {
      first = std::move(reason);
    }
  }
  return first ? first : ClipboardTrouble{"there is no display, and so no clipboard"};
}

}  // namespace quoll::share

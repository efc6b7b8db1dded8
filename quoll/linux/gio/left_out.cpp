#include "quoll/linux/gio/left_out.h"

#include <algorithm>

#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::gio {
namespace {

constexpr std::size_t kLongestText = std::size_t{64} << 10;
constexpr std::size_t kMostNames = 100;
constexpr std::size_t kLongestLine = 1000;

LeftOut left_out_in(std::string_view line) {
  constexpr std::string_view kBetween = ": ";
  const std::size_t end = std::min(line.find(kBetween), line.size());
  const std::string_view reason = line.substr(std::min(end + kBetween.size(), line.size()));
  return {foundation::printable(line.substr(0, end), kLongestLine),
          reason.empty() ? "it was not taken" : foundation::printable(reason, kLongestLine)};
}

}  // namespace

std::string bounded_left_out(std::string text) {
  if (text.size() > kLongestText) {
    const std::size_t end = text.rfind('\n', kLongestText);
    text.resize(end == std::string::npos ? 0 : end);
    text += text.empty() ? "?\n..." : "\n...";
  }
  return text;
}

std::string read_left_out(int pipe, std::chrono::steady_clock::time_point deadline) {
  std::string text;
  bool ended = false;
  while (!ended) {
    std::string piece;
    const bool is_read =
        posix::read_until(pipe, piece, kLongestText, ended, std::chrono::hours(1), deadline);
    if (text.size() <= kLongestText) {
      text += piece;
    }
    if (!is_read) {
      break;
    }
  }
  return bounded_left_out(std::move(text));
}

std::string draft_in(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of('\n'), text.size()));
  return text.starts_with('/') ? foundation::printable(text.substr(0, text.find('\n')))
                               : std::string();
}

std::vector<LeftOut> left_out_of(std::string_view text) {
  std::vector<LeftOut> all;
  bool is_path = true;
  while (!text.empty() && all.size() <= kMostNames) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (line.empty() || is_path) {
      is_path = line.empty();
    } else if (all.size() == kMostNames) {
      all.push_back({"...", "there are more"});
    } else {
      all.push_back(left_out_in(line));
    }
  }
  return all;
}

}  // namespace quoll::gio

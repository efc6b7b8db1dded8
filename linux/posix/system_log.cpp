#include "linux/posix/system_log.h"

#include <syslog.h>

#include <algorithm>
#include <utility>

#include "quoll/foundation/text.h"

namespace quoll::posix {

namespace {

constexpr std::size_t kLongestLine = 4096;
constexpr std::string_view kCut = "…";

class SystemLog final : public platform::Log {
 public:
  explicit SystemLog(std::string program) {
    // The C library keeps the pointer for as long as the process lives.
    static std::string name;
    name = std::move(program);
    ::openlog(name.c_str(), LOG_PID | LOG_NDELAY, LOG_USER);
  }

  void line(std::string_view text) override { ::syslog(LOG_NOTICE, "%s", one_line(text).c_str()); }
};

void escape(std::string& out, char byte) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto number = static_cast<unsigned char>(byte);
  out.append("\\x").push_back(kDigits[number >> 4U]);
  out.push_back(kDigits[number & 15U]);
}

/// The bytes of the control character or line separator that a text begins with; 0 for others.
std::size_t breaking_bytes(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x20 || first == 0x7f) {
    return 1;
  }
  if (text.starts_with("\u2028") || text.starts_with("\u2029")) {
    return 3;
  }
  return first == 0xc2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xa0 ? 2 : 0;
}

void append_breaking(std::string& out, std::string_view bytes) {
  switch (bytes[0]) {
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    default:
      for (const char byte : bytes) {
        escape(out, byte);
      }
  }
}

/// How many bytes the character takes at which a text begins, by its first byte.
std::size_t character_bytes(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  const std::size_t claimed = first < 0xc0 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
  return std::min(claimed, text.size());
}

}  // namespace

std::string one_line(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t before = out.size();
    std::size_t taken = breaking_bytes(text);
    if (taken != 0) {
      append_breaking(out, text.substr(0, taken));
    } else if (taken = character_bytes(text); foundation::is_utf8(text.substr(0, taken))) {
      out.append(text.substr(0, taken));
    } else {
      taken = 1;
      escape(out, text[0]);
    }
    if (out.size() > kLongestLine) {
      out.resize(before);
      while (out.size() + kCut.size() > kLongestLine) {
        do {
          out.pop_back();
        } while (!foundation::is_utf8(out));
      }
      return out.append(kCut);
    }
    text.remove_prefix(taken);
  }
  return out;
}

std::shared_ptr<platform::Log> make_system_log(std::string program) {
  return std::make_shared<SystemLog>(std::move(program));
}

}  // namespace quoll::posix

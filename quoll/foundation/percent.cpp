#include "quoll/foundation/percent.h"

#include <array>
#include <utility>

#include "quoll/foundation/percent_kernel.h"
#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

using percent::Encoded;
using percent::KeptCharacters;
using percent::Kernel;

constexpr std::string_view kUnreserved =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

constexpr KeptCharacters kKeptInQuery(kUnreserved);
constexpr KeptCharacters kKeptInPath(kUnreserved, "/!$&'()*+,:=@");

const Kernel& kernel() {
  static const Kernel& chosen = percent::avx2() != nullptr ? *percent::avx2() : percent::portable();
  return chosen;
}

/// How much is done at once, into a place that the nearest cache holds.
constexpr std::size_t kPart = 2048;

void encode_append(std::string& out, std::string_view text, const KeptCharacters& kept) {
  const std::size_t before = out.size();
  for (std::size_t at = 0; at < text.size(); at += kPart) {
    const std::string_view part = text.substr(at, kPart);
    std::array<char, 3 * kPart + percent::kSlack> encoded;  // NOLINT(*-member-init): filled below
    const char* const end = kernel().encode(part, kept, encoded.data());
    const auto length = static_cast<std::size_t>(end - encoded.data());
    if (at == 0 && text.size() > kPart) {  // a little more than if all is like the first part
      out.reserve(before + (text.size() / kPart + 1) * (length + length / 8));
    }
    out.append(encoded.data(), length);
  }
}

/// The beginning of a text, which ends in front of an escape that would be cut.
std::string_view first_part(std::string_view text) {
  const std::string_view part = text.substr(0, kPart);
  for (std::size_t digits : {0U, 1U}) {
    if (part.size() < text.size() && part[part.size() - 1 - digits] == '%') {
      return part.substr(0, part.size() - 1 - digits);
    }
  }
  return part;
}

std::optional<std::string> decode(std::string_view text, PlusSign plus_sign) {
  const char plus = plus_sign == PlusSign::kSpace ? ' ' : '+';
  std::array<char, kPart + percent::kSlack> decoded;  // NOLINT(*-member-init): filled below
  if (text.size() <= kPart) {
    const char* const end = kernel().decode(text, plus, decoded.data());
    const char* const begin = decoded.data();
    return end == nullptr ? std::nullopt : std::optional<std::string>(std::in_place, begin, end);
  }
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::string_view part = first_part(text);
    text.remove_prefix(part.size());
    char* const end = kernel().decode(part, plus, decoded.data());
    if (end == nullptr) {
      return std::nullopt;
    }
    out.append(decoded.data(), end);
  }
  return out;
}

char* encode_portably(std::string_view text, const KeptCharacters& kept, char* to) {
  for (const char c : text) {
    const Encoded& encoded = kept.encoded(c);
    // Four bytes, whole, of which the next overwrites what was too much: no branch depends on the
    // text. The builtin, since what fortified headers make of std::memcpy is a call for each byte,
    // five times as slow.
    __builtin_memcpy(to, encoded.data(), sizeof encoded);
    to += encoded[3];
  }
  return to;
}

char* decode_portably(std::string_view text, char plus, char* to) {
  constexpr int kBase = 16;
  while (!text.empty()) {
    char c = text.front();
    text.remove_prefix(1);
    if (c == '%') {
      const int high = text.size() < 2 ? -1 : digit_value(text[0], kBase);
      const int low = text.size() < 2 ? -1 : digit_value(text[1], kBase);
      if (high < 0 || low < 0) {
        return nullptr;
      }
      c = static_cast<char>(high * kBase + low);
      text.remove_prefix(2);
    } else if (c == '+') {
      c = plus;
    }
    *to++ = c;
  }
  return to;
}

}  // namespace

const Kernel& percent::portable() {
  static constexpr Kernel kKernel{encode_portably, decode_portably};
  return kKernel;
}

void percent_encode_append(std::string& out, std::string_view text) {
  encode_append(out, text, kKeptInQuery);
}

std::string percent_encode(std::string_view text) {
  std::string out;
  encode_append(out, text, kKeptInQuery);
  return out;
}

std::string percent_encode_path(std::string_view path) {
  std::string out;
  encode_append(out, path, kKeptInPath);
  return out;
}

void percent_escape_append(std::string& out, char byte) {
  static constexpr KeptCharacters kNone("");
  out.append(kNone.encoded(byte).data(), 3);
}

std::optional<std::string> percent_decode_bytes(std::string_view text, PlusSign plus) {
  return decode(text, plus);
}

std::optional<std::string> percent_decode(std::string_view text, PlusSign plus) {
  auto decoded = decode(text, plus);
  return decoded && is_utf8(*decoded) ? std::move(decoded) : std::nullopt;
}

}  // namespace quoll::foundation

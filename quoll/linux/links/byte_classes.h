#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The classes of bytes that the finder of links tells apart.
namespace quoll::links {

/// Where an ASCII byte may stand. Bytes above ASCII belong to characters, see `mark_at`.
enum ByteClass : std::uint8_t {
  kAlphanumeric = 1,
  kName = 2,      // in the name of a host
  kToken = 4,     // in a host's name or before "@" in a mail address
  kUser = 8,      // before "@" in a URL: user and password
  kStop = 16,     // a link ends before it
  kTrigger = 32,  // every link has one of these
};

constexpr std::array<std::uint8_t, 256> make_classes() {
  std::array<std::uint8_t, 256> classes{};
  const auto add = [&](std::string_view bytes, unsigned byte_class) {
    for (const char c : bytes) {
      auto& entry = classes[static_cast<unsigned char>(c)];
      entry = static_cast<std::uint8_t>(entry | byte_class);
    }
  };
  add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
      kAlphanumeric | kName | kToken | kUser);
  add("-._", kName | kToken | kUser);
  add("+", kToken | kUser);
  add(":%!$&*=~", kUser);
  add(".:", kTrigger);
  add(" <>\"'`\x7F", kStop);
  for (std::size_t control = 0; control < 0x20; ++control) {
    classes[control] = kStop;
  }
  return classes;
}

inline constexpr std::array<std::uint8_t, 256> kClasses = make_classes();

inline bool is(char c, ByteClass byte_class) {
  return (kClasses[static_cast<unsigned char>(c)] & byte_class) != 0;
}
inline bool is_ascii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}
inline bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool is_one_of(char c, std::string_view characters) {
  return std::any_of(characters.begin(), characters.end(), [&](char one) { return one == c; });
}

}  // namespace quoll::links

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quoll::compose {

/// The recipients in one field of a draft.
struct Addresses {
  /// What a header has, to be joined by ", ".
  std::vector<std::string> written;
  /// What a mail client is told: each address as people write it, with its name if it has one,
  /// also those in groups. Nothing in it can be decoded to anything else.
  std::vector<std::string> plain;
};

/// Reads joined recipients, each followed by ";", as anyone may have written them: addresses with
/// or without a name, several with "," between them, groups ("name: a@x, b@x"). A text that is not
/// an address is written as a name without one, so that the user can correct it, and is no plain
/// address. Nothing is decoded: what looks like an encoded word is a text like others. The time is
/// linear in the length.
[[nodiscard]] Addresses read_addresses(std::string_view joined);

}  // namespace quoll::compose

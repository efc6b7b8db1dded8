#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quoll::compose {

/// The recipients in one field of a draft.
struct Addresses {
  /// What a header has, to be joined by ", ".
  std::vector<std::string> written;
  /// What a mail client is told: each address as people write it, with its name if it has one,
  /// also those in groups. Each is as `is_plain_address` says.
  std::vector<std::string> plain;
  std::size_t not_plain = 0;  ///< recipients that are only in `written`
};

/// Reads joined recipients, each followed by ";", as anyone may have written them: addresses with
/// or without a name, several with "," between them, groups ("name: a@x, b@x"). A text that is not
/// an address is written as a name without one, so that the user can correct it, and is no plain
/// address. Nothing is decoded: what looks like an encoded word is a text like others. Names lose
/// their invisible characters. The time is linear in the length.
[[nodiscard]] Addresses read_addresses(std::string_view joined);

}  // namespace quoll::compose

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quoll::share {

/// What is said of a draft and stands in no item: its subject and whom it is for. An address is one
/// text, with or without a name.
struct Envelope {
  std::optional<std::string> subject;
  std::vector<std::string> to, cc, bcc;
};

/// Why a text cannot stand among the recipients of a command, in words that follow a colon; empty
/// when it can. Whether it is an address of somebody is not looked at.
[[nodiscard]] std::string why_no_recipient(std::string_view address);

}  // namespace quoll::share

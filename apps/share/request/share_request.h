#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "apps/share/request/envelope.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// An item whose bytes an open descriptor delivers: a file from its beginning, anything else from
/// where it is.
struct DescriptorItem {
  posix::UniqueFd descriptor;
  std::string media_type;  ///< in small letters; empty when it is not known
  /// The name of the file that the bytes become, whatever folders stand before it. Without one an
  /// image becomes an image, like one from standard input.
  std::string name;
};

/// Something that is not shared, as it was given, and why, in words that follow a colon.
struct LeftOut {
  std::string what;
  std::string why;
  /// The reason for the system log, when `why` may hold a name or another program's words.
  std::string logged_as{};
};

/// What was asked for, as it was given. A text that is "-" comes from standard input, and so does
/// an item; without `has_list` at most one of them all does, and no recipient.
struct ShareRequest {
  std::optional<std::string> title;
  std::optional<std::string> text;
  std::optional<std::string> html;
  std::vector<std::string> items;
  std::vector<DescriptorItem> descriptor_items = {};
  /// How many bytes these may have together: a program may send the same file many times.
  std::size_t byte_budget = std::size_t{256} << 20;
  /// How long one of them may deliver nothing: it may be a pipe that nobody writes to.
  std::chrono::milliseconds read_timeout{10'000};
  /// Standard input is a list of at most 256 MiB, each part of it ended by a zero byte: first the
  /// texts that are "-" (title, subject, text, HTML, recipients), then more items.
  bool has_list = false;
  /// What the clipboard holds is asked for; no text and no item then.
  bool has_clipboard = false;
  /// Without a subject the title is the draft's.
  Envelope envelope = {};
  /// Links for which the disk is never asked, as a page may have chosen them.
  std::vector<std::string> links = {};
  /// What was lost before it could be asked for.
  std::vector<LeftOut> left_out = {};
  /// A menu has put it together. It may give as the text what is there already.
  bool is_from_menu = false;
};

}  // namespace quoll::share

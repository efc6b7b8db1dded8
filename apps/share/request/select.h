#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/share/request/private_folder.h"
#include "apps/share/shared_item.h"

namespace quoll::share {

/// Bytes that an open descriptor delivers: a file from its beginning, anything else from where it
/// is.
struct Delivery {
  int descriptor = -1;
  std::string media_type;  ///< in small letters; empty when it is not known
  /// The name of the file that they become, whatever folders stand before it. Without one an image
  /// becomes an image, like one from standard input.
  std::string name;
};

/// What somebody wants to share, as it was given. A text that is "-" comes from standard input, and
/// so does an item; at most one of them all does.
struct Wanted {
  std::optional<std::string> title;
  std::optional<std::string> text;
  std::optional<std::string> html;
  std::vector<std::string> items;
  /// Each is closed when it was taken.
  std::vector<Delivery> deliveries = {};
  /// How many bytes they may have together: they may be anybody's, one file many times.
  std::size_t room = std::size_t{256} << 20;
  /// How long one of them may deliver nothing: it may be anybody's.
  std::chrono::milliseconds patience{10'000};
  /// Standard input is a list of any length, each part of it ended by a zero byte: first the texts
  /// that are "-", in the order above, then more items.
  bool has_list = false;
};

/// Something that is not shared, as it was given, and why, in words that follow a colon.
struct LeftOut {
  std::string what;
  std::string why;
};

/// What can be shared of it.
struct Selection {
  std::optional<std::string> title;
  std::optional<std::string> text;
  std::optional<std::string> html;
  std::vector<std::shared_ptr<SharedItem>> items;
  std::vector<LeftOut> left_out;
  /// Holds the files of items that came as bytes; null when there is none.
  std::unique_ptr<PrivateFolder> folder;

  /// A title alone is no share.
  [[nodiscard]] bool empty() const { return !text && !html && items.empty(); }
};

/// Reads what was asked for. Files are looked at, not opened for good; bytes from standard
/// input, descriptors and `data:` URLs are taken now. Whatever cannot be shared is left out with
/// the reason and keeps nothing else back. A text that only repeats a link, or the title of one, is
/// dropped. To be called while there is one thread.
[[nodiscard]] Selection select(const Wanted& wanted, int standard_input = 0);

}  // namespace quoll::share

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/share/request/prepared_files.h"
#include "apps/share/request/share_request.h"
#include "apps/share/shared_item.h"

namespace quoll::share {

/// What can be shared of a request.
struct Selection {
  std::optional<std::string> title;
  std::optional<std::string> text;
  std::optional<std::string> html;
  /// In the order in which they were picked; they answer in it.
  std::vector<std::shared_ptr<SharedItem>> items;
  std::shared_ptr<SerialQueue> answers = std::make_shared<SerialQueue>();
  std::vector<LeftOut> left_out;
  /// Its subject is the title when no other was given.
  Envelope envelope;
  /// The files of items that came as bytes, and what `prepare` adds; none without a container.
  std::optional<PreparedFiles> prepared_files;

  /// A title alone is no share.
  [[nodiscard]] bool empty() const { return !text && !html && items.empty(); }
};

/// Reads what was asked for. Files are looked at, not opened for good; bytes from standard
/// input, descriptors and `data:` URLs are taken now. Those that are no image become files in
/// `container`, the path of the group container; without one they are left out. Whatever cannot be
/// shared is left out with the reason and keeps nothing else back. A text of a menu that only
/// repeats a link, or the title of one, is dropped. When an `Interruption` has come, what is still
/// to be waited for is left out. To be called while there is one thread.
[[nodiscard]] Selection make_selection(ShareRequest request,
                                       const std::optional<std::string>& container,
                                       int standard_input = 0);

}  // namespace quoll::share

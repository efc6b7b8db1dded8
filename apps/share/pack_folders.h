#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "apps/share/request/selection.h"

namespace quoll::share {

/// A line about the files of a selection when they are more than many mail servers take, as far as
/// that can be told; folders count nothing. None when they are not.
[[nodiscard]] std::optional<std::string> note_about_size(const Selection& selection);

/// What surrounds the packing of folders.
struct Packing {
  std::string helper;  ///< the program
  /// Gets a line before each folder is packed.
  std::function<void(const std::string& line)> note;
  /// Called, at most ten times a second, with the bytes of the file that is being written.
  std::function<void(std::uint64_t bytes)> progress;
};

/// Packs each folder of a selection into a ZIP file among its prepared files, by a helper that is
/// confined to it, and lets the item answer with that file. What cannot be packed is left out, the
/// folder or what lies in it, and the log says why without names. Answers false, with some items
/// lost, when an `Interruption` has come; then the helper has ended.
[[nodiscard]] bool pack_folders(Selection& selection, const Packing& packing);

}  // namespace quoll::share

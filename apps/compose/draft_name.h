#pragma once

#include <string_view>

namespace quoll::compose {

/// Whether it is the name that a draft gets: YYYYMMDD-HHMMSS, or with a number behind it, as in
/// 20261121-040040-1. The receiver removes only what has such a name: one of its folders may be a
/// link to a folder with the user's own files.
[[nodiscard]] bool is_draft_name(std::string_view name);

/// Whether it is such a name behind a dot: of a draft that is being removed.
[[nodiscard]] bool is_hidden_draft_name(std::string_view name);

}  // namespace quoll::compose

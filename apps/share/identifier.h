#pragma once

namespace quoll::share {

/// The share extension's bundle identifier. It is also its name on the session bus and, with
/// ".desktop", the name of its desktop entry.
inline constexpr const char* kIdentifier = "it.vorlent.quoll2.Quoll-Share";

}  // namespace quoll::share

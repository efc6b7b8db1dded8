#pragma once

#include <array>

namespace quoll::share {

/// A program that reads the clipboard of a kind of display.
struct ClipboardProgram {
  const char* display;  ///< the variable that is set where there is such a display
  const char* name;
  const char* package;  ///< that it is installed with
};

inline constexpr ClipboardProgram kWaylandClipboard{"WAYLAND_DISPLAY", "wl-paste", "wl-clipboard"};
inline constexpr ClipboardProgram kXClipboard{"DISPLAY", "xclip", "xclip"};
/// In the order in which they are asked.
inline constexpr std::array kClipboardPrograms{kWaylandClipboard, kXClipboard};

}  // namespace quoll::share

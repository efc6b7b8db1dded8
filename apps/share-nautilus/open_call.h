#pragma once

#include <glib.h>

namespace quoll::share_nautilus {

/// Has the share extension share these files (`NautilusFileInfo`, which stay the caller's), and
/// returns at once. What goes wrong is shown by a notification of the desktop. Throws nothing.
void call_open(GList* files) noexcept;

}  // namespace quoll::share_nautilus

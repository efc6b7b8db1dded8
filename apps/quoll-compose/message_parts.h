#pragma once

#include <string>

#include "apps/quoll-compose/mime_handles.h"
#include "apps/quoll-compose/taken_files.h"
#include "quoll/message/extension_message.h"

namespace quoll::receiver {

/// The body: the plain text, and the HTML text as its alternative when there is one. Without a
/// plain text, what a reader sees of the HTML.
[[nodiscard]] MimeHandle<GMimeObject> body_part(const ExtensionMessage& message);

/// An attachment, read from its file when it is written. Control characters of its name are shown
/// as pictures (a line feed as U+240A), so that the name stays in its header. Throws
/// `CannotCompose` when the file cannot be opened.
[[nodiscard]] MimeHandle<GMimeObject> attachment_part(const TakenFile& file);

}  // namespace quoll::receiver

#pragma once

#include <string>

#include "apps/compose/mime_handles.h"
#include "apps/compose/taken_files.h"
#include "quoll/message/extension_message.h"

namespace quoll::compose {

/// The draft's plain text with line feeds; without one, what a reader sees of the HTML.
[[nodiscard]] std::string plain_body(const ExtensionMessage& message);

/// The body: the plain text, and the HTML text as its alternative when there is one.
[[nodiscard]] MimeHandle<GMimeObject> body_part(const ExtensionMessage& message);

/// A name of a file with its control characters shown as pictures (a line feed as U+240A).
[[nodiscard]] std::string with_control_pictures(const std::string& name);

/// An attachment, read from its file when it is written. Its name has pictures of its control
/// characters, so that it stays in its header. Throws `CannotCompose` when the file cannot be
/// opened.
[[nodiscard]] MimeHandle<GMimeObject> attachment_part(const TakenFile& file);

}  // namespace quoll::compose

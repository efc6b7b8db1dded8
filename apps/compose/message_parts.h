#pragma once

#include <string>

#include "apps/compose/mime_handles.h"
#include "apps/compose/taken_files.h"
#include "quoll/message/extension_message.h"

namespace quoll::compose {

/// The plain text of the draft, with line feeds. A draft without one gets the text of its HTML.
[[nodiscard]] std::string plain_body(const ExtensionMessage& message);

/// The body: the plain text, and the HTML text as its alternative if there is one.
[[nodiscard]] MimeHandle<GMimeObject> body_part(const ExtensionMessage& message);

/// A file's name with its control characters replaced by their pictures (U+240A for a line feed).
[[nodiscard]] std::string with_control_pictures(const std::string& name);

/// An attachment. Its file is opened now and read when the part is written. Control characters in
/// its name are replaced by pictures, so that the name stays inside its header. Throws
/// `CannotCompose` when the file cannot be opened.
[[nodiscard]] MimeHandle<GMimeObject> attachment_part(const TakenFile& file);

}  // namespace quoll::compose

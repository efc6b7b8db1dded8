#pragma once

#include <cstdint>
#include <string>

#include "apps/compose/draft_bodies.h"
#include "apps/compose/mime_handles.h"

namespace quoll::compose {

/// The body: the plain text, and the HTML text as its alternative if there is one.
[[nodiscard]] MimeHandle<GMimeObject> body_part(const DraftBodies& bodies);

/// An attachment with this name and the first `size` bytes of the file, which is read when the part
/// is written and stays the caller's. Control characters in the name are replaced by pictures, so
/// that it stays inside its header. Throws `std::system_error`.
[[nodiscard]] MimeHandle<GMimeObject> attachment_part(const std::string& file_name, int file,
                                                      std::uint64_t size);

/// Gives a part that has parts a boundary of its own.
void set_boundary(GMimeMultipart* multipart);

}  // namespace quoll::compose

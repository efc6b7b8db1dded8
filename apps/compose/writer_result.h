#pragma once

#include "apps/compose/draft_fields.h"

/// How a draft comes from the process that writes it. There is one file: the message, then the
/// fields, then a record of a fixed size that says how long both are.
namespace quoll::compose {

/// How every message begins that is written here.
inline constexpr char kMessageBeginning[] = "X-Unsent: 1\r\nSubject:";

/// The writer's side: writes the fields behind the message, which ends where `file` stands. Throws
/// `std::system_error`.
void append_fields(int file, const DraftFields& fields);

/// The other side: reads and checks the fields, and cuts the file to the message. What is read is
/// believed in nothing. Throws `ComposeError` when anything is not as it should be; the file is
/// of no use then.
[[nodiscard]] DraftFields take_fields(int file);

}  // namespace quoll::compose

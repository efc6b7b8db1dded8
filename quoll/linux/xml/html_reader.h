#pragma once

#include <cstddef>
#include <vector>

#include "quoll/linux/xml/mail_form.h"
#include "quoll/platform/styled_text.h"

namespace quoll::xml {

/// The function that the reader module exports under the first name below. It reads `size` bytes of
/// UTF-8 and fills `runs`, which is empty before. Answers null, or why the document cannot be read,
/// as a text that is valid as long as the module. Any thread may call.
using ReadHtml = const char*(const char* html, std::size_t size,
                             std::vector<platform::TextRun>* runs) noexcept;

/// The function that makes both bodies of a mail; it answers as the one above does. A document that
/// is too large for a body is no failure.
using ReadMail = const char*(const char* html, std::size_t size, MailBodies* bodies) noexcept;

inline constexpr const char* kReadHtmlName = "quoll_read_html";
inline constexpr const char* kReadMailName = "quoll_read_mail";
inline constexpr const char* kReaderModule = "quoll-html-reader.so";

}  // namespace quoll::xml

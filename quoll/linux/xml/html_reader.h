#pragma once

#include <cstddef>
#include <vector>

#include "quoll/platform/styled_text.h"

namespace quoll::xml {

/// The function that the reader module exports under the name below. It reads `size` bytes of UTF-8
/// and fills `runs`, which is empty before. Answers null, or why the document cannot be read, as a
/// text that is valid as long as the module. Any thread may call.
using ReadHtml = const char*(const char* html, std::size_t size,
                             std::vector<platform::TextRun>* runs) noexcept;

inline constexpr const char* kReadHtmlName = "quoll_read_html";
inline constexpr const char* kReaderModule = "quoll-html-reader.so";

}  // namespace quoll::xml

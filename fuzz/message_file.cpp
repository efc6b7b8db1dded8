// Reads any bytes as a message file. It is summarised, or it is not a message. The printed summary
// has no control character that a terminal would obey, and no more lines than a summary may have.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

#include "apps/compose/compose_error.h"
#include "apps/compose/draft_summary.h"
#include "apps/compose/mime_handles.h"
#include "fuzz/require.h"
#include "quoll/foundation/text.h"
#include "tests/support/temporary_folder.h"

using quoll::fuzz::require;

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  g_mime_init();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const quoll::test::TemporaryFolder folder;
  const std::string path = folder.write("message.eml", {reinterpret_cast<const char*>(data), size});
  std::ostringstream out;
  std::size_t attachments = 0;
  try {
    const auto draft = quoll::compose::read_draft(quoll::compose::open_message(path), path);
    attachments = draft.attachments.size();
    print_summary(out, draft);
  } catch (const quoll::compose::ComposeError&) {
    return 0;
  }
  const std::string printed = out.str();
  require(std::all_of(printed.begin(), printed.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte == '\n' || (byte >= 0x20 && byte != 0x7F);
  }));
  require(quoll::foundation::is_utf8(printed));
  constexpr std::size_t kLines = 32;
  require(static_cast<std::size_t>(std::count(printed.begin(), printed.end(), '\n')) <=
          kLines + attachments);
  return 0;
}

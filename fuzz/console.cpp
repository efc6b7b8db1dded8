// Gives any lines to the operation console as requests. Each is answered by one line of JSON: a
// result, a raised exception or a refusal. A value that is read and written is read again as the
// same value.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "apps/console/operations/read_value.h"
#include "apps/console/operations/session.h"
#include "apps/console/operations/write_value.h"
#include "fuzz/require.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/text.h"
#include "tests/support/memory_files.h"
#include "tests/support/recorders.h"
#include "tests/support/thread_coordinator.h"

namespace {

using namespace quoll;
using fuzz::require;

void check_reply(const std::string& reply) {
  require(reply.find('\n') == std::string::npos);
  require(foundation::is_utf8(reply));
  const console::Json json = console::parse_json(reply);
  require(json.is_object());
  require(json.contains("result") + json.contains("raised") + json.contains("refused") == 1);
}

/// Reads a value from JSON and writes it as JSON.
std::string through(const std::string& json) {
  const auto timer = std::make_shared<console::AnswerTimer>();
  return console::json_line(
      console::write_value(console::ValueReader(timer).read(console::parse_json(json))));
}

void check_value(std::string_view line) {
  std::string written;
  try {
    written = through(std::string(line));
  } catch (const console::Refused&) {
    return;
  } catch (const foundation::NSException&) {
    return;
  }
  require(through(written) == written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  console::Session session(
      {.bundle = std::make_shared<test::FixedBundle>("it.vorlent.quoll2.Quoll-Share"),
       .files = std::make_shared<test::MemoryFiles>(),
       .coordinator = test::thread_coordinators(),
       .workspace = std::make_shared<test::RecordingWorkspace>(),
       .clock = std::make_shared<test::HeldClock>()});
  std::string_view text(reinterpret_cast<const char*>(data), size);
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() == text.size() ? line.size() : line.size() + 1);
    check_reply(session.reply(line));
    check_value(line);
  }
  return 0;
}

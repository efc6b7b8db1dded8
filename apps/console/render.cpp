#include <unistd.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>

#include "apps/console/commands.h"
#include "apps/console/message_file.h"
#include "apps/console/operations/write_value.h"
#include "apps/console/output.h"
#include "apps/console/program_desktop.h"
#include "quoll/foundation/printable.h"

namespace quoll::console {

namespace {

/// Prints the text unchanged for a program; at a terminal without what a terminal would obey.
void print_html(std::string_view html) {
  if (isatty(STDOUT_FILENO) == 0) {
    std::cout << html << '\n';
    return;
  }
  std::size_t begin = 0;
  while (begin <= html.size()) {
    const std::size_t end = std::min(html.find('\n', begin), html.size());
    std::cout << foundation::printable(html.substr(begin, end - begin)) << '\n';
    begin = end + 1;
  }
}

}  // namespace

int render(const std::string& file, bool as_json) {
  const platform::ScopedDesktop desktop(reading_desktop());
  try {
    const std::string html = read_message(file)->renderHtml();
    if (as_json) {
      print_json({{"html", json_text(html)}});
    } else {
      print_html(html);
    }
  } catch (const std::exception& failure) {
    return complain(failure.what());
  }
  return finish();
}

}  // namespace quoll::console

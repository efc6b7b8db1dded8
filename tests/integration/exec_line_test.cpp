// Arguments in the `Exec` line of a desktop entry.
#include "quoll/linux/gio/exec_line.h"

#include <gtest/gtest.h>

namespace quoll::gio {
namespace {

using Words = std::vector<std::string>;

TEST(ExecLine, ArgumentsStandWhereTheLineTakesFiles) {
  struct Row {
    const char* reason;
    const char* exec;
    Words arguments;
    const char* line;
  };
  const Row rows[] = {
      {"a URL", "mail %u", {"-a", "b"}, "mail '-a' 'b'"},
      {"URLs", "mail %U --last", {"b"}, "mail 'b' --last"},
      {"a file", "mail %f", {"b"}, "mail 'b'"},
      {"files", "mail %F", {"b"}, "mail 'b'"},
      {"once", "mail %u %U", {"b"}, "mail 'b' "},
      {"nothing", "mail", {"b"}, "mail 'b'"},
      {"other codes stay", "mail -t %c %i %u", {"b"}, "mail -t %c %i 'b'"},
      {"a per cent sign", "mail 50%% %u", {"b"}, "mail 50%% 'b'"},
      {"a per cent sign in an argument", "mail %u", {"%u 5%"}, "mail '%%u 5%%'"},
      {"quotes in an argument",
       "mail %u",
       {"it's \"q\" $HOME `x` \\"},
       "mail 'it'\\''s \"q\" $HOME `x` \\'"},
      {"a line feed in an argument", "mail %u", {"a\nb"}, "mail 'a\nb'"},
      {"an empty argument", "mail %u", {""}, "mail ''"},
      {"marks of a sandbox",
       "flatpak run --file-forwarding org.x.Mail @@u %u @@",
       {"b"},
       "flatpak run --file-forwarding org.x.Mail 'b' "},
      {"what looks like a mark stays in an argument", "mail %u", {"@@ x @@"}, "mail '@@ x @@'"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(exec_line_with(row.exec, row.arguments), row.line) << row.reason;
  }
}

}  // namespace
}  // namespace quoll::gio

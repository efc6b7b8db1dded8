#include <gtest/gtest.h>

#include <string>

#include "apps/compose/message_headers.h"
#include "quoll/linux/gio/handles.h"

namespace quoll::compose {
namespace {

/// The line of a header as it stands in the file, unfolded.
std::string written(const ExtensionMessage& message, const std::string& name) {
  g_mime_init();
  const auto made = message_with_headers(message);
  const gio::TextHandle file(g_mime_object_to_string(GMIME_OBJECT(made.get()), nullptr));
  std::string text = file.get();
  for (std::size_t at = 0; (at = text.find("\n ", at)) != std::string::npos;) {
    text.erase(at, 1);
  }
  const auto start = text.find("\n" + name + ": ");
  return start == std::string::npos
             ? "(none)"
             : text.substr(start + 1, text.find('\n', start + 1) - start - 1);
}

TEST(DraftHeaders, ASubjectIsReadAsItWasWritten) {
  struct Row {
    const char* reason;
    std::string subject;
    std::string line;
  };
  const Row rows[] = {
      {"plain words", "a subject", "Subject: a subject"},
      {"other letters", "Gr\u00FC\u00DFe an a", "Subject: =?UTF-8?Q?Gr=C3=BC=C3=9Fe_an_a?="},
      {"what looks encoded", "=?UTF-8?Q?a?=", "Subject: =?UTF-8?Q?=3D=3FUTF=2D8=3FQ=3Fa=3F=3D?="},
      {"many letters, each whole in its piece", "\u65E5\u65E5\u65E5\u65E5\u65E5\u65E5",
       "Subject: =?UTF-8?Q?=E6=97=A5=E6=97=A5=E6=97=A5=E6=97=A5=E6=97=A5?= =?UTF-8?Q?=E6=97=A5?="},
  };
  for (const Row& row : rows) {
    const auto message = ExtensionMessage::make();
    message->subject = row.subject;
    EXPECT_EQ(written(*message, "Subject"), row.line) << row.reason;
  }
}

TEST(DraftHeaders, ARecipientStaysApartFromTheNext) {
  struct Row {
    const char* reason;
    std::string to;
    std::string line;
  };
  const Row rows[] = {
      {"two addresses", "a@x;Ann <b@x>", "To: a@x, Ann <b@x>"},
      {"a lone word is no beginning of a name", "root;Ann <b@x>", "To: root <root>, Ann <b@x>"},
      {"words of a group", "g: root, a@x", "To: g: root <root>, a@x;"},
      {"what is no address", "two words;a@x", "To: two words <>, a@x"},
  };
  for (const Row& row : rows) {
    const auto message = ExtensionMessage::make();
    message->toString = row.to;
    EXPECT_EQ(written(*message, "To"), row.line) << row.reason;
  }
}

TEST(DraftHeaders, NoLineIsTooLong) {
  const auto message = ExtensionMessage::make();
  message->subject = std::string(5000, 'x');
  message->toString = std::string(5000, 'y') + ";a@x";
  g_mime_init();
  const auto made = message_with_headers(*message);
  const gio::TextHandle file(g_mime_object_to_string(GMIME_OBJECT(made.get()), nullptr));
  std::string_view text = file.get();
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size() - 1);
    EXPECT_LE(end, 998U);
    text.remove_prefix(end + 1);
  }
}

}  // namespace
}  // namespace quoll::compose

// What a stranger's fields become on the command line of each client, all the way from the command:
// no control character, no option, no second recipient.
#include <glib.h>

#include <algorithm>

#include "quoll/linux/gio/handles.h"
#include "tests/integration/client_home.h"

namespace quoll::test {
namespace {

std::string base64(const std::string& text) {
  return gio::TextHandle(g_base64_encode(reinterpret_cast<const guchar*>(text.data()), text.size()))
      .get();
}

/// ASCII and Unicode's control characters, and the separators of lines and paragraphs.
bool has_control_character(const std::string& text) {
  for (const char* separator : {"\u2028", "\u2029"}) {
    if (holds(text, separator)) {
      return true;
    }
  }
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const auto next = static_cast<unsigned char>(at + 1 < text.size() ? text[at + 1] : 0);
    if (byte < 0x20 || byte == 0x7F || (byte == 0xC2 && next >= 0x80 && next < 0xA0)) {
      return true;
    }
  }
  return false;
}

/// The fields of a `mailto:` link, decoded: the recipients first, then `key=value` each.
Words fields_of(const std::string& link) {
  Words fields;
  std::istringstream parts(link);
  std::string part;
  std::getline(parts, part, '?');
  std::istringstream recipients(part.substr(std::string("mailto:").size()));
  while (std::getline(recipients, part, ',')) {
    fields.push_back(*foundation::percent_decode(part));
  }
  while (std::getline(parts, part, '&')) {
    fields.push_back(*foundation::percent_decode(part));
  }
  return fields;
}

const Words& options_of(const std::string& program) {
  static const Words kmail{"--composer", "--subject=", "--cc=", "--bcc=", "--body=", "--msg="};
  static const Words claws{"--compose"};
  static const Words none;
  return program == "kmail" ? kmail : (program == "claws-mail" ? claws : none);
}

class HostileFields : public MailClientTest {
 protected:
  void check_text(const std::string& text, const std::string& context) {
    EXPECT_FALSE(has_control_character(text)) << context << ": " << text;
    EXPECT_FALSE(holds(text, "=?") && holds(text, "?=")) << context << ": " << text;
  }
  /// Everything up to the recipients is an option or its value; answers the recipients.
  Words check(const std::string& program, const Words& words, const std::string& context);
};

Words HostileFields::check(const std::string& program, const Words& words,
                           const std::string& context) {
  Words recipients;
  for (std::size_t at = 0; at < words.size(); ++at) {
    const std::string& word = words[at];
    if (word == "--") {
      recipients.assign(words.begin() + static_cast<std::ptrdiff_t>(at) + 1, words.end());
      for (const auto& recipient : recipients) {
        check_text(recipient, context);
      }
      return recipients;
    }
    if (program == "mutt") {
      const bool takes_value = word == "-s" || word == "-i" || word == "-c" || word == "-b";
      EXPECT_TRUE(takes_value) << context << ": " << word;
      check_text(words[++at], context);
    } else if (word.starts_with("mailto:")) {
      check_text(word, context);
      for (const std::string& field : fields_of(word)) {
        if (!field.starts_with("body=")) {
          check_text(field, context);
        }
      }
    } else if (!word.starts_with("--body=")) {
      EXPECT_TRUE(std::ranges::any_of(
          options_of(program), [&](const std::string& option) { return word.starts_with(option); }))
          << context << ": " << word;
      check_text(word, context);
    }
  }
  return recipients;
}

TEST_F(HostileFields, BecomeNoArgumentsOfTheirOwn) {
  const std::string injected = "foo\nReply-To: evil@x.org";
  struct Row {
    const char* reason;
    std::string key;
    std::string value;
    std::size_t recipients;  ///< at the most
  };
  const Row rows[] = {
      {"a line feed in an encoded name", "to", "\"=?utf-8?b?" + base64(injected) + "?=\" <a@b.org>",
       1},
      {"the same without quotes", "to", "=?utf-8?b?" + base64(injected) + "?= <a@b.org>", 1},
      {"the other encoding", "to", "=?utf-8?q?foo=0AReply-To:_evil@x.org?= <a@b.org>", 1},
      {"an encoded address", "to", "=?utf-8?q?a=40b.org=0ABcc:_evil@x.org?=", 1},
      {"an encoded comment", "to", "a@b.org (=?utf-8?q?x=0ABcc:_evil@x.org?=)", 1},
      {"a line feed as it is", "to", "a@b.org\nBcc: evil", 1},
      {"in the copies", "cc", "=?utf-8?b?" + base64(injected) + "?= <a@b.org>", 0},
      {"in the blind copies", "bcc", "=?utf-8?b?" + base64(injected) + "?= <a@b.org>", 0},
      {"in the subject", "subject", "=?utf-8?b?" + base64(injected) + "?=", 0},
      {"a line feed in the subject", "subject", injected, 0},
      {"other ends of lines", "subject",
       "a\u2028b\u2029c\u0085d\x0b"
       "e\rf",
       0},
      {"an option as the subject", "subject", "--attach=/etc/passwd", 0},
      {"an option as a recipient", "to", "--attach=/etc/passwd@x.org", 1},
      {"an option as a copy", "cc", "-a/etc/passwd@x.org", 0},
      {"more fields of a link", "to", "a@b.org?bcc=evil@x.org&attach=/etc/passwd", 1},
      {"a zero byte", "to", std::string("a@b.org\0evil@x.org", 18), 1},
  };
  for (const char* program : {"evolution", "kmail", "claws-mail", "mutt"}) {
    choose(program, "X");
    for (const Row& row : rows) {
      const std::string context = std::string(program) + ": " + row.reason;
      const std::string url =
          "quoll://compose?plainBody=text&" + row.key + "=" + foundation::percent_encode(row.value);
      EXPECT_TRUE(holds(compose({url}).output, "was given to X.\n")) << context;
      const Words recipients = check(program, given(), context);
      EXPECT_LE(recipients.size(), row.recipients) << context;
      std::filesystem::remove(home_.bus.path("given"));
    }
  }
}

}  // namespace
}  // namespace quoll::test

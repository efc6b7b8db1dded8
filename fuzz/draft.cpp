// Writes a draft with any fields, bodies and attachments as a message file. Its lines keep the
// limits of mail, and it has the headers of a draft and no others. A mail library reads back the
// same subject, recipients, texts, file names and bytes.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "apps/compose/draft_file.h"
#include "apps/compose/message_headers.h"
#include "fuzz/require.h"
#include "fuzz/script.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/xml/mail_form.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace quoll;
using compose::MimeHandle;
using fuzz::require;

struct Draft {
  std::string subject, from, to, cc, bcc;
  std::string plain, html;
  std::vector<compose::TakenFile> files;
  std::vector<std::string> contents;
};

const test::TemporaryFolder& folder() {
  static const test::TemporaryFolder made;
  return made;
}

Draft draft_of(fuzz::Script& script) {
  // All that comes by a command URL is UTF-8.
  const auto text = [&script](unsigned limit) {
    return foundation::utf8_with_escapes(script.text(limit));
  };
  Draft draft{.subject = text(255),
              .from = text(64),
              .to = text(128),
              .cc = text(64),
              .bcc = text(64),
              .plain = text(255),
              .html = text(255),
              .files = {},
              .contents = {}};
  // Lines that are longer than any limit.
  for (std::string* const field : {&draft.subject, &draft.to, &draft.plain, &draft.html}) {
    for (unsigned doublings = script.choice(20); doublings > 15; --doublings) {
      *field += *field;
    }
  }
  for (unsigned left = script.choice(4); left > 0; --left) {
    std::string name = text(255);
    std::erase_if(name, [](char c) { return c == '/' || c == '\0'; });
    draft.contents.emplace_back(script.text(255));
    draft.files.push_back({name.empty() ? "a" : name,
                           folder().write("file" + std::to_string(left), draft.contents.back())});
  }
  return draft;
}

std::shared_ptr<ExtensionMessage> message_of(const Draft& draft) {
  auto message = ExtensionMessage::make();
  message->subject = draft.subject;
  message->from = draft.from;
  message->toString = draft.to;
  message->ccString = draft.cc;
  message->bccString = draft.bcc;
  message->plainBody = draft.plain;
  message->htmlBody = draft.html;
  return message;
}

/// Everything must be ASCII, except addresses, which may be UTF-8 where mail allows it.
void check_characters(std::string_view line, bool is_address) {
  require(line.find_first_of("\r\n") == std::string_view::npos);
  require(foundation::is_utf8(line));
  for (const char c : line) {
    const bool is_ascii = static_cast<unsigned char>(c) < 0x80;
    require(is_ascii ? (c >= ' ' && c != 0x7F) || c == '\t' : is_address);
  }
}

void check_lines(std::string_view file) {
  constexpr std::size_t kLongestLine = 998;
  const std::set<std::string_view> addresses{"From", "To", "Cc", "Bcc"};
  const std::set<std::string_view> others{"X-Unsent", "Subject", "MIME-Version", "Content-Type",
                                          "Content-Transfer-Encoding"};
  std::set<std::string_view> seen;
  std::string_view name;
  for (bool in_headers = true; !file.empty();) {
    const std::size_t end = file.find("\r\n");
    const std::string_view line = file.substr(0, end);
    require(line.size() <= kLongestLine);
    in_headers = in_headers && !line.empty();
    if (in_headers && line[0] != ' ' && line[0] != '\t') {
      name = line.substr(0, line.find(':'));
      require((addresses.contains(name) || others.contains(name)) && seen.insert(name).second);
    }
    check_characters(line, in_headers && addresses.contains(name));
    file.remove_prefix(end == std::string_view::npos ? file.size() : end + 2);
  }
  require(seen.contains("X-Unsent") && seen.contains("Content-Type"));
}

struct ReadParts {
  std::vector<std::string> texts;
  std::vector<std::string> names;
  std::vector<std::string> contents;
};

void add_part(GMimeObject* /*parent*/, GMimeObject* object, gpointer data) {
  auto& parts = *static_cast<ReadParts*>(data);
  require(GMIME_IS_PART(object) || GMIME_IS_MULTIPART(object));
  if (!GMIME_IS_PART(object)) {
    return;
  }
  GMimePart* const part = GMIME_PART(object);
  GByteArray* const bytes = g_byte_array_new();
  const MimeHandle<GMimeStream> stream(g_mime_stream_mem_new_with_byte_array(bytes));
  require(g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(part), stream.get()) >= 0);
  std::string content(reinterpret_cast<const char*>(bytes->data), bytes->len);
  if (g_mime_part_is_attachment(part) == FALSE) {
    std::erase(content, '\r');
    parts.texts.push_back(std::move(content));
    return;
  }
  const char* const name = g_mime_part_get_filename(part);
  parts.names.emplace_back(name != nullptr ? name : "");
  const char* const size = g_mime_object_get_content_disposition_parameter(object, "size");
  require(size == std::to_string(content.size()));
  parts.contents.push_back(std::move(content));
}

/// Each white space becomes one blank: the reader leaves the line ends of a header inside names.
std::string with_single_blanks(std::string_view text) {
  std::string out;
  for (const char c : text) {
    const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
    out += !blank ? std::string(1, c) : out.ends_with(' ') ? "" : " ";
  }
  return out;
}

/// Joins the addresses in the list. A text that is not an address is only in the header. A single
/// word is its own name, which may be decoded.
std::string addresses(InternetAddressList* list) {
  std::string all;
  for (int i = 0; i < internet_address_list_length(list); ++i) {
    InternetAddress* const one = internet_address_list_get_address(list, i);
    if (INTERNET_ADDRESS_IS_GROUP(one)) {
      all += "group\n" +
             addresses(internet_address_group_get_members(INTERNET_ADDRESS_GROUP(one))) + "end\n";
      continue;
    }
    const std::string address = internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(one));
    const gio::TextHandle text(internet_address_to_string(one, nullptr, FALSE));
    const bool is_word = address.find('@') == std::string::npos;
    all += address.empty() ? "" : (is_word ? address : with_single_blanks(text.get())) + "\n";
  }
  return all;
}

/// The text on one line.
std::string one_line(std::string text) {
  for (char& c : text) {
    c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? ' ' : c;
  }
  return std::string(foundation::trim(text));
}

void check_headers(GMimeMessage* read, const Draft& draft, const ExtensionMessage& message) {
  const char* const subject = g_mime_message_get_subject(read);
  require((subject != nullptr ? subject : "") == one_line(draft.subject));
  const auto made = compose::message_with_headers(message);
  for (const GMimeAddressType type : {GMIME_ADDRESS_TYPE_FROM, GMIME_ADDRESS_TYPE_TO,
                                      GMIME_ADDRESS_TYPE_CC, GMIME_ADDRESS_TYPE_BCC}) {
    require(addresses(g_mime_message_get_addresses(read, type)) ==
            addresses(g_mime_message_get_addresses(made.get(), type)));
  }
}

std::string with_line_feeds(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool pair = text.substr(at).starts_with("\r\n");
    out += text[at] == '\r' ? '\n' : text[at];
    at += pair ? 1 : 0;
  }
  return out;
}

/// The name with its control characters replaced by their pictures.
std::string shown(const std::string& name) {
  std::string out;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    const bool control = byte < 0x20 || byte == 0x7F;
    out += control ? std::string("\xE2\x90") + static_cast<char>(byte == 0x7F ? 0xA1 : 0x80 + byte)
                   : std::string(1, c);
  }
  return out;
}

void check_parts(GMimeMessage* read, const Draft& draft) {
  ReadParts parts;
  g_mime_message_foreach(read, add_part, &parts);
  const auto bodies = draft.html.empty() ? xml::MailBodies() : xml::mail_bodies(draft.html);
  std::vector<std::string> texts{draft.plain.empty() ? bodies.text : with_line_feeds(draft.plain)};
  if (!bodies.html.empty()) {
    texts.push_back(bodies.html);
  }
  require(parts.texts.size() == texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    // A message with one text ends with a line end.
    require(parts.texts[i] == texts[i] || (texts.size() == 1 && parts.texts[i] == texts[i] + "\n"));
  }
  require(parts.contents == draft.contents);
  require(parts.names.size() == draft.files.size());
  for (std::size_t i = 0; i < parts.names.size(); ++i) {
    require(parts.names[i] == shown(draft.files[i].name));
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  g_mime_init();
  setenv("XDG_DATA_HOME", folder().path().c_str(), 1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Script script({data, size});
  const Draft draft = draft_of(script);
  const auto message = message_of(draft);
  const std::string path = compose::write_draft(*message, draft.files);
  const std::string file = test::read_file(path);
  std::filesystem::remove(path);
  check_lines(file);
  const MimeHandle<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(file.data(), file.size()));
  const MimeHandle<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
  const MimeHandle<GMimeMessage> read(g_mime_parser_construct_message(parser.get(), nullptr));
  require(read != nullptr);
  check_headers(read.get(), draft, *message);
  check_parts(read.get(), draft);
  return 0;
}

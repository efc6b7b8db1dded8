// Writes a draft with any fields, bodies and attachments as a message file. Its lines keep the
// limits of mail, and it has the headers of a draft and no others. A mail library reads back the
// same subject, recipients, texts, file names and bytes.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/compose/addresses.h"
#include "apps/compose/clean_text.h"
#include "apps/compose/draft_bodies.h"
#include "apps/compose/mime_handles.h"
#include "apps/compose/plain_address.h"
#include "apps/compose/write_message.h"
#include "apps/compose/writer_result.h"
#include "fuzz/require.h"
#include "fuzz/script.h"
#include "quoll/foundation/percent.h"
#include "quoll/foundation/text.h"
#include "tests/compose/taken_folder.h"

namespace {

using namespace quoll;
using compose::MimeHandle;
using fuzz::require;

struct Draft {
  std::string subject, from, to, cc, bcc;
  std::string plain, html;
  std::vector<std::string> names;
  std::vector<std::string> contents;
};

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
              .names = {},
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
    name = foundation::whole_characters(name, 255);
    draft.names.push_back(name.empty() || name == "." || name == ".." ? "a" : name);
  }
  return draft;
}

/// The draft as it waits to be written.
void put(const Draft& draft, test::TakenFolder& folder) {
  std::string url = "quoll://compose?";
  for (const auto& [key, text] :
       {std::pair{"subject", &draft.subject}, std::pair{"from", &draft.from},
        std::pair{"to", &draft.to}, std::pair{"cc", &draft.cc}, std::pair{"bcc", &draft.bcc},
        std::pair{"plainBody", &draft.plain}, std::pair{"htmlBody", &draft.html}}) {
    url += std::string(key) + "=" + foundation::percent_encode(*text) + "&";
  }
  folder.around().write("taken/command", url);
  std::filesystem::remove_all(folder.around().path("taken/files"));
  for (unsigned i = 0; i < draft.names.size(); ++i) {
    folder.add(i, draft.names[i], draft.contents[i]);
  }
  folder.open_both();
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

/// The addresses in the list that a mail client may be told, without names.
std::vector<std::string> addresses(InternetAddressList* list) {
  std::vector<std::string> all;
  for (int i = 0; i < internet_address_list_length(list); ++i) {
    InternetAddress* const one = internet_address_list_get_address(list, i);
    if (INTERNET_ADDRESS_IS_GROUP(one)) {
      const auto members =
          addresses(internet_address_group_get_members(INTERNET_ADDRESS_GROUP(one)));
      all.insert(all.end(), members.begin(), members.end());
      continue;
    }
    const std::string address = internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(one));
    if (compose::is_plain_address(address)) {
      all.push_back(address);
    }
  }
  return all;
}

/// The same of what a mail client is told.
std::vector<std::string> addresses(const std::vector<std::string>& plain) {
  std::vector<std::string> all;
  for (const std::string& text : plain) {
    const auto begin = text.ends_with('>') ? text.rfind('<') + 1 : 0;
    all.push_back(text.substr(begin, text.size() - begin - (begin == 0 ? 0 : 1)));
  }
  return all;
}

void check_headers(GMimeMessage* read, const Draft& draft, const compose::DraftFields& fields) {
  const char* const subject = g_mime_message_get_subject(read);
  const std::string line = compose::one_line(draft.subject);
  require((line.empty() && !draft.names.empty()) || (subject != nullptr ? subject : "") == line);
  const struct {
    GMimeAddressType type;
    const std::string& field;
    const std::vector<std::string>& plain;
  } rows[] = {{GMIME_ADDRESS_TYPE_TO, draft.to, fields.to},
              {GMIME_ADDRESS_TYPE_CC, draft.cc, fields.cc},
              {GMIME_ADDRESS_TYPE_BCC, draft.bcc, fields.bcc}};
  for (const auto& [type, field, plain] : rows) {
    // A domain in other letters is written in ASCII, and what looks encoded is told to nobody.
    const bool is_comparable =
        field.find("=?") == std::string::npos &&
        std::ranges::all_of(field, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    require(!is_comparable ||
            addresses(g_mime_message_get_addresses(read, type)) == addresses(plain));
  }
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
  const auto bodies = compose::draft_bodies(draft.plain, draft.html);
  std::vector<std::string> texts{bodies.text};
  if (!bodies.html.empty()) {
    texts.push_back(bodies.html);
  }
  require(parts.texts.size() == texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    // A message with one text ends with a line end.
    require(parts.texts[i] == texts[i] || (texts.size() == 1 && parts.texts[i] == texts[i] + "\n"));
  }
  require(parts.contents == draft.contents);
  require(parts.names.size() == draft.names.size());
  for (std::size_t i = 0; i < parts.names.size(); ++i) {
    require(parts.names[i] == shown(draft.names[i]));
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  compose::prepare_to_write();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static test::TakenFolder folder;
  fuzz::Script script({data, size});
  const Draft draft = draft_of(script);
  put(draft, folder);
  compose::write_message(folder.taken(), folder.output());
  const compose::DraftFields fields = compose::take_fields(folder.output());
  const std::string file = folder.written();
  check_lines(file);
  const MimeHandle<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(file.data(), file.size()));
  const MimeHandle<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
  const MimeHandle<GMimeMessage> read(g_mime_parser_construct_message(parser.get(), nullptr));
  require(read != nullptr);
  check_headers(read.get(), draft, fields);
  check_parts(read.get(), draft);
  return 0;
}

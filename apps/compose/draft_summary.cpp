#include "apps/compose/draft_summary.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>

#include "apps/compose/compose_error.h"
#include "apps/compose/confine_writer.h"
#include "apps/compose/mime_handles.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {
namespace {

std::string text_or_empty(const char* text) {
  return text != nullptr ? text : "";
}

// The header as it is in the file, so that text that is not an address is shown too.
std::string header(GMimeMessage* message, const char* name) {
  return text_or_empty(g_mime_object_get_header(GMIME_OBJECT(message), name));
}

MimeHandle<GMimeMessage> parsed(GMimeStream* stream, const std::string& path) {
  const MimeHandle<GMimeParser> parser(g_mime_parser_new_with_stream(stream));
  MimeHandle<GMimeMessage> message(g_mime_parser_construct_message(parser.get(), nullptr));
  if (!message) {
    throw ComposeError(path + " is not a message");
  }
  return message;
}

// The size of an attachment. Drafts of this program have it in a header; in other message files the
// part must be decoded.
std::int64_t size_of(GMimePart* part) {
  const std::string said =
      text_or_empty(g_mime_object_get_content_disposition_parameter(GMIME_OBJECT(part), "size"));
  std::int64_t size = 0;
  if (std::from_chars(said.data(), said.data() + said.size(), size).ec == std::errc()) {
    return size;
  }
  GMimeDataWrapper* content = g_mime_part_get_content(part);
  if (content == nullptr) {
    return 0;
  }
  const MimeHandle<GMimeStream> nowhere(g_mime_stream_null_new());
  g_mime_data_wrapper_write_to_stream(content, nowhere.get());
  return g_mime_stream_length(nowhere.get());
}

void add_part(GMimeObject* /*parent*/, GMimeObject* object, gpointer data) {
  auto& draft = *static_cast<DraftSummary*>(data);
  if (!GMIME_IS_PART(object)) {
    return;
  }
  GMimePart* part = GMIME_PART(object);
  GMimeContentType* type = g_mime_object_get_content_type(object);
  if (g_mime_part_is_attachment(part) != FALSE) {
    const gio::TextHandle type_text(g_mime_content_type_get_mime_type(type));
    draft.attachments.push_back({.name = text_or_empty(g_mime_part_get_filename(part)),
                                 .type = text_or_empty(type_text.get()),
                                 .size = size_of(part)});
  } else if (draft.text.empty() && GMIME_IS_TEXT_PART(object) &&
             g_mime_content_type_is_type(type, "text", "plain") != FALSE) {
    const gio::TextHandle text(g_mime_text_part_get_text(GMIME_TEXT_PART(object)));
    draft.text = text_or_empty(text.get());
  }
}

/// Prints the beginning of the text, at most a screenful, with each line indented.
void print_excerpt(std::ostream& out, std::string_view text) {
  constexpr int kLines = 12;
  constexpr std::size_t kBytesOfALine = 400;
  for (int line = 0; !text.empty(); ++line) {
    if (line == kLines) {
      out << "  ...\n";
      return;
    }
    const auto end = std::min(text.find('\n'), text.size());
    std::string_view content = text.substr(0, end);
    content.remove_suffix(content.ends_with('\r') ? 1 : 0);
    const std::string_view shown = foundation::whole_characters(content, kBytesOfALine);
    out << "  " << foundation::printable(shown) << (shown.size() < content.size() ? "..." : "")
        << '\n';
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

}  // namespace

std::string size_text(std::int64_t size) {
  constexpr std::array<const char*, 4> kUnits{"KB", "MB", "GB", "TB"};
  if (size < 1000) {
    return std::to_string(size) + (size == 1 ? " byte" : " bytes");
  }
  auto amount = static_cast<double>(size) / 1000;
  std::size_t unit = 0;
  while (amount >= 999.95 && unit + 1 < kUnits.size()) {
    amount /= 1000;
    ++unit;
  }
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f %s", amount, kUnits[unit]);
  return text.data();
}

posix::UniqueFd open_message(const std::string& path) {
  posix::UniqueFd file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0) {
    throw ComposeError(path + " cannot be read: " + std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    throw ComposeError(path + " is not a file");
  }
  return file;
}

void confine_reader(int folder) {
  g_mime_init();
  tzset();
  // Encodings of text that cannot be loaded later, as mail has them. An open one stays loaded.
  [[gnu::used]] static const std::array kOpen{
      g_iconv_open("utf-8", "iso-8859-1"),   g_iconv_open("utf-8", "iso-8859-2"),
      g_iconv_open("utf-8", "iso-8859-15"),  g_iconv_open("utf-8", "windows-1251"),
      g_iconv_open("utf-8", "windows-1252"), g_iconv_open("utf-8", "koi8-r")};
  WriterConfinement().enforce_reading(folder, 0);
}

DraftSummary read_draft(posix::UniqueFd file, const std::string& path) {
  const MimeHandle<GMimeStream> stream(g_mime_stream_fs_new(file.release()));
  const auto message = parsed(stream.get(), path);
  DraftSummary draft{.path = path,
                     .subject = text_or_empty(g_mime_message_get_subject(message.get())),
                     .from = header(message.get(), "From"),
                     .to = header(message.get(), "To"),
                     .cc = header(message.get(), "Cc"),
                     .bcc = header(message.get(), "Bcc"),
                     .text = {},
                     .attachments = {}};
  g_mime_message_foreach(message.get(), add_part, &draft);
  return draft;
}

void print_summary(std::ostream& out, const DraftSummary& draft) {
  const auto line = [&](const char* label, const std::string& text) {
    if (!text.empty()) {
      out << label << foundation::printable(text) << '\n';
    }
  };
  out << "Subject: " << (draft.subject.empty() ? "(none)" : foundation::printable(draft.subject))
      << '\n';
  line("From: ", draft.from);
  line("To: ", draft.to);
  line("Cc: ", draft.cc);
  line("Bcc: ", draft.bcc);
  if (!draft.text.empty()) {
    out << "Text:\n";
    print_excerpt(out, draft.text);
  }
  if (!draft.attachments.empty()) {
    out << "Attachments: " << draft.attachments.size() << '\n';
    for (const auto& attachment : draft.attachments) {
      out << "  " << foundation::printable(attachment.name) << " ("
          << foundation::printable(attachment.type) << ", " << size_text(attachment.size) << ")\n";
    }
  }
  line("Draft: ", draft.path);
}

std::string subject_of(const std::string& path) {
  constexpr std::size_t kEnoughForHeaders = 65536;
  const posix::UniqueFd fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  std::string head(kEnoughForHeaders, '\0');
  const ssize_t size = read(fd.get(), head.data(), head.size());
  if (size <= 0) {
    return {};
  }
  const MimeHandle<GMimeStream> stream(
      g_mime_stream_mem_new_with_buffer(head.data(), static_cast<std::size_t>(size)));
  const auto message = parsed(stream.get(), path);
  return text_or_empty(g_mime_message_get_subject(message.get()));
}

}  // namespace quoll::compose

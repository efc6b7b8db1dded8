#include "apps/compose/message_parts.h"

#include <fcntl.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "apps/compose/cannot_compose.h"
#include "apps/compose/compose_command.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/unique_fd.h"
#include "quoll/linux/xml/mail_form.h"

namespace quoll::compose {
namespace {

void set_content(GMimePart* part, GMimeStream* content, GMimeContentEncoding encoding) {
  const MimeHandle<GMimeDataWrapper> wrapper(
      g_mime_data_wrapper_new_with_stream(content, GMIME_CONTENT_ENCODING_DEFAULT));
  g_mime_part_set_content(part, wrapper.get());
  g_mime_part_set_content_encoding(part, encoding);
}

// Mail has one kind of line break; a lone carriage return would come back as a character.
std::string with_line_feeds(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\r') {
      out += text[at];
    } else if (at + 1 == text.size() || text[at + 1] != '\n') {
      out += '\n';
    }
  }
  return out;
}

MimeHandle<GMimeObject> text_part(const char* subtype, const std::string& text) {
  MimeHandle<GMimePart> part(g_mime_part_new_with_type("text", subtype));
  g_mime_object_set_content_type_parameter(GMIME_OBJECT(part.get()), "charset", "utf-8");
  const std::string lines = with_line_feeds(text);
  const MimeHandle<GMimeStream> content(
      g_mime_stream_mem_new_with_buffer(lines.data(), lines.size()));
  set_content(part.get(), content.get(), GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE);
  return MimeHandle<GMimeObject>(GMIME_OBJECT(part.release()));
}

bool is_utf8_file(int file) {
  std::string block;
  std::string buffer(std::size_t{1} << 16U, '\0');
  ssize_t size = 0;
  for (off_t at = 0; (size = pread(file, buffer.data(), buffer.size(), at)) > 0; at += size) {
    block.append(buffer, 0, static_cast<std::size_t>(size));
    const std::string_view whole = foundation::whole_characters(block);
    if (!foundation::is_utf8(whole)) {
      return false;
    }
    block.erase(0, whole.size());
  }
  return foundation::is_utf8(block);
}

// By the name and the first bytes. A text that is not UTF-8 has no name of its encoding here, and a
// mail client that guesses one writes the text anew, so it goes as the bytes that it is. Messages
// and multiparts may not be encoded, and an encoded one is what keeps its bytes.
std::string content_type(const std::string& name, int file) {
  constexpr const char* kAnyBytes = "application/octet-stream";
  std::array<unsigned char, 4096> head{};
  const ssize_t size = pread(file, head.data(), head.size(), 0);
  if (size <= 0) {
    return kAnyBytes;
  }
  const gio::TextHandle guess(
      g_content_type_guess(name.c_str(), head.data(), static_cast<std::size_t>(size), nullptr));
  const gio::TextHandle mime(g_content_type_get_mime_type(guess.get()));
  const std::string type = mime ? mime.get() : kAnyBytes;
  const bool encodable = !type.starts_with("message/") && !type.starts_with("multipart/") &&
                         !type.starts_with("inode/") && type.find('/') != std::string::npos &&
                         (!type.starts_with("text/") || is_utf8_file(file));
  return encodable ? type : kAnyBytes;
}

// The sender's HTML is a stranger's: what goes into a message is written anew.
xml::MailBodies bodies_of_html(const ExtensionMessage& message) {
  const std::string html = text_of_field(message.htmlBody());
  return html.empty() ? xml::MailBodies() : xml::mail_bodies(html);
}

}  // namespace

// A name is written into a header, where the library lets a line feed through, and read by people.
std::string with_control_pictures(const std::string& name) {
  std::string out;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) {
      out += "\xE2\x90";
      out += static_cast<char>(byte == 0x7F ? 0xA1 : 0x80 + byte);
    } else {
      out += c;
    }
  }
  return out;
}

std::string plain_body(const ExtensionMessage& message) {
  const std::string plain = text_of_field(message.plainBody());
  return plain.empty() ? bodies_of_html(message).text : with_line_feeds(plain);
}

MimeHandle<GMimeObject> body_part(const ExtensionMessage& message) {
  const xml::MailBodies bodies = bodies_of_html(message);
  const std::string plain = text_of_field(message.plainBody());
  auto plain_part = text_part("plain", plain.empty() ? bodies.text : plain);
  if (bodies.html.empty()) {
    return plain_part;
  }
  const MimeHandle<GMimeObject> html_part = text_part("html", bodies.html);
  MimeHandle<GMimeMultipart> alternative(g_mime_multipart_new_with_subtype("alternative"));
  g_mime_multipart_add(alternative.get(), plain_part.get());
  g_mime_multipart_add(alternative.get(), html_part.get());
  return MimeHandle<GMimeObject>(GMIME_OBJECT(alternative.release()));
}

MimeHandle<GMimeObject> attachment_part(const TakenFile& file) {
  posix::UniqueFd fd(open(file.path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (fd.get() < 0 || fstat(fd.get(), &status) != 0) {
    throw CannotCompose(file.name + " cannot be read: " + std::strerror(errno));
  }
  const std::string type = content_type(file.name, fd.get());
  const auto slash = type.find('/');
  MimeHandle<GMimePart> part(
      g_mime_part_new_with_type(type.substr(0, slash).c_str(), type.substr(slash + 1).c_str()));
  GMimeObject* object = GMIME_OBJECT(part.get());
  g_mime_object_set_disposition(object, GMIME_DISPOSITION_ATTACHMENT);
  g_mime_part_set_filename(part.get(), with_control_pictures(file.name).c_str());
  g_mime_object_set_content_disposition_parameter(object, "size",
                                                  std::to_string(status.st_size).c_str());
  const MimeHandle<GMimeStream> content(g_mime_stream_fs_new(fd.release()));
  set_content(part.get(), content.get(), GMIME_CONTENT_ENCODING_BASE64);
  static_cast<void>(part.release());  // `object` is the same
  return MimeHandle<GMimeObject>(object);
}

}  // namespace quoll::compose

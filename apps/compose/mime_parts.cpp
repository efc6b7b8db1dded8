#include "apps/compose/mime_parts.h"

#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

#include "apps/compose/clean_text.h"
#include "quoll/foundation/text.h"

namespace quoll::compose {
namespace {

void set_content(GMimePart* part, GMimeStream* content, GMimeContentEncoding encoding) {
  const MimeHandle<GMimeDataWrapper> wrapper(
      g_mime_data_wrapper_new_with_stream(content, GMIME_CONTENT_ENCODING_DEFAULT));
  g_mime_part_set_content(part, wrapper.get());
  g_mime_part_set_content_encoding(part, encoding);
}

MimeHandle<GMimeObject> text_part(const char* subtype, const std::string& text) {
  MimeHandle<GMimePart> part(g_mime_part_new_with_type("text", subtype));
  g_mime_object_set_content_type_parameter(GMIME_OBJECT(part.get()), "charset", "utf-8");
  const MimeHandle<GMimeStream> content(
      g_mime_stream_mem_new_with_buffer(text.data(), text.size()));
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

// In UTF-8; GMime would look for a shorter encoding, and load its converter.
void set_name(GMimeObject* part, const std::string& name) {
  g_mime_part_set_filename(GMIME_PART(part), name.c_str());
  GMimeContentType* const type = g_mime_object_get_content_type(part);
  GMimeContentDisposition* const disposition = g_mime_object_get_content_disposition(part);
  for (GMimeParam* const param :
       {g_mime_param_list_get_parameter(g_mime_content_type_get_parameters(type), "name"),
        g_mime_param_list_get_parameter(g_mime_content_disposition_get_parameters(disposition),
                                        "filename")}) {
    g_mime_param_set_charset(param, "utf-8");
  }
}

}  // namespace

void set_boundary(GMimeMultipart* multipart) {
  std::array<unsigned char, 16> random{};
  if (getentropy(random.data(), random.size()) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  std::string boundary = "=_";  // stands in no text that is encoded for mail
  for (const unsigned char byte : random) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    boundary.append({kDigits[byte >> 4U], kDigits[byte & 0xFU]});
  }
  g_mime_multipart_set_boundary(multipart, boundary.c_str());
}

MimeHandle<GMimeObject> body_part(const DraftBodies& bodies) {
  auto plain_part = text_part("plain", bodies.text);
  if (bodies.html.empty()) {
    return plain_part;
  }
  const MimeHandle<GMimeObject> html_part = text_part("html", bodies.html);
  MimeHandle<GMimeMultipart> alternative(g_mime_multipart_new_with_subtype("alternative"));
  set_boundary(alternative.get());
  g_mime_multipart_add(alternative.get(), plain_part.get());
  g_mime_multipart_add(alternative.get(), html_part.get());
  return MimeHandle<GMimeObject>(GMIME_OBJECT(alternative.release()));
}

MimeHandle<GMimeObject> attachment_part(const std::string& file_name, int file,
                                        std::uint64_t size) {
  const std::string type = content_type(file_name, file);
  const auto slash = type.find('/');
  MimeHandle<GMimePart> part(
      g_mime_part_new_with_type(type.substr(0, slash).c_str(), type.substr(slash + 1).c_str()));
  GMimeObject* object = GMIME_OBJECT(part.get());
  g_mime_object_set_disposition(object, GMIME_DISPOSITION_ATTACHMENT);
  set_name(object, with_control_pictures(file_name));
  g_mime_object_set_content_disposition_parameter(object, "size", std::to_string(size).c_str());
  const MimeHandle<GMimeStream> content(
      g_mime_stream_fs_new_with_bounds(file, 0, static_cast<gint64>(size)));
  g_mime_stream_fs_set_owner(GMIME_STREAM_FS(content.get()), FALSE);
  set_content(part.get(), content.get(), GMIME_CONTENT_ENCODING_BASE64);
  static_cast<void>(part.release());  // `object` is the same
  return MimeHandle<GMimeObject>(object);
}

}  // namespace quoll::compose

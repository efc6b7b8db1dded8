// The writer inside this program, for as long as there is none of its own.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "apps/compose/compose_command.h"
#include "apps/compose/compose_error.h"
#include "apps/compose/message_headers.h"
#include "apps/compose/message_parts.h"
#include "apps/compose/small_file.h"
#include "apps/compose/taken_files.h"
#include "apps/compose/writer_result.h"
#include "apps/compose/writer_server.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {
namespace {

class NoRoom final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

[[noreturn]] void cannot_write(int error) {
  const std::string reason = std::string("it cannot be written: ") + std::strerror(error);
  if (error == ENOSPC || error == EDQUOT || error == EFBIG) {
    throw NoRoom(reason);
  }
  throw ComposeError(reason);
}

class Output {
 public:
  explicit Output(int fd) : format_(g_mime_format_options_new()) {
    const MimeHandle<GMimeStream> file(g_mime_stream_fs_new(fd));
    stream_.reset(g_mime_stream_buffer_new(file.get(), GMIME_STREAM_BUFFER_BLOCK_WRITE));
    g_mime_format_options_set_param_encoding_method(format_.get(),
                                                    GMIME_PARAM_ENCODING_METHOD_RFC2231);
    g_mime_format_options_set_newline_format(format_.get(), GMIME_NEWLINE_FORMAT_DOS);
  }
  void text(const std::string& text) {
    check(g_mime_stream_write(stream_.get(), text.data(), text.size()));
  }
  void headers(GMimeObject* object) {
    check(g_mime_header_list_write_to_stream(g_mime_object_get_header_list(object), format_.get(),
                                             stream_.get()));
  }
  void object(GMimeObject* object) {
    errno = 0;
    check(g_mime_object_write_to_stream(object, format_.get(), stream_.get()));
  }
  void finish() {
    check(g_mime_stream_flush(stream_.get()));
    check(g_mime_stream_close(stream_.get()));
  }

 private:
  static void check(ssize_t written) {
    if (written < 0) {
      cannot_write(errno);
    }
  }

  FormatHandle format_;
  MimeHandle<GMimeStream> stream_;
};

void write_parts(Output& out, GMimeMessage* message, GMimeObject* body,
                 const std::vector<TakenFile>& files, const std::string& folder) {
  if (files.empty()) {
    g_mime_message_set_mime_part(message, body);
    out.object(GMIME_OBJECT(message));
    return;
  }
  const MimeHandle<GMimeMultipart> mixed(g_mime_multipart_new_with_subtype("mixed"));
  const std::string boundary = std::string("--") + g_mime_multipart_get_boundary(mixed.get());
  g_mime_message_set_mime_part(message, GMIME_OBJECT(mixed.get()));
  out.headers(GMIME_OBJECT(message));
  out.headers(GMIME_OBJECT(mixed.get()));
  out.text("\r\n" + boundary + "\r\n");
  out.object(body);
  for (const auto& file : files) {
    out.text("\r\n" + boundary + "\r\n");
    out.object(attachment_part({.name = file.name, .path = folder + "/" + file.path}).get());
  }
  out.text("\r\n" + boundary + "--\r\n");
}

DraftFields fields_of(const ExtensionMessage& message) {
  DraftFields fields{.subject = subject_line(message),
                     .to = addresses_in(text_of_field(message.toString())),
                     .cc = addresses_in(text_of_field(message.ccString())),
                     .bcc = addresses_in(text_of_field(message.bccString())),
                     .text = {}};
  for (const char c : plain_body(message)) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte < 0x20 && c != '\n' && c != '\t') || byte == 0x7F) {
      fields.text += with_control_pictures(std::string(1, c));
    } else {
      fields.text += c;
    }
  }
  return fields;
}

DraftFields last_fields;

}  // namespace

void append_fields(int /*file*/, const DraftFields& fields) {
  last_fields = fields;
}

DraftFields take_fields(int /*file*/) {
  return last_fields;
}

WriterServer WriterServer::start() {
  g_mime_init();
  return {};
}

WriterAnswer WriterServer::write(int taken_folder, int output) {
  try {
    const std::string folder = "/proc/self/fd/" + std::to_string(taken_folder);
    const auto files = taken_files(taken_folder);
    const ComposeCommand command = read_compose_command(read_small_file(taken_folder, "command"));
    if (subject_line(*command.message).empty() && !files.empty()) {
      command.message->subject =
          files.front().name +
          (files.size() == 1 ? "" : " and " + std::to_string(files.size() - 1) + " more");
    }
    Output out(fcntl(output, F_DUPFD_CLOEXEC, 3));
    const auto headers = message_with_headers(*command.message);
    const auto body = body_part(*command.message);
    write_parts(out, headers.get(), body.get(), files, folder);
    out.finish();
    append_fields(output, fields_of(*command.message));
    return {.end = WriterEnd::kWritten, .reason = {}};
  } catch (const NoRoom& reason) {
    return {.end = WriterEnd::kNoRoom, .reason = reason.what()};
  } catch (const std::exception& reason) {
    return {.end = WriterEnd::kFailed, .reason = reason.what()};
  }
}

void WriterServer::stop() noexcept {}

}  // namespace quoll::compose

#include "apps/compose/write_message.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "apps/compose/addresses.h"
#include "apps/compose/clean_text.h"
#include "apps/compose/draft_bodies.h"
#include "apps/compose/mail_header.h"
#include "apps/compose/mime_handles.h"
#include "apps/compose/mime_parts.h"
#include "apps/compose/waiting_files.h"
#include "apps/compose/writer_result.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"
#include "quoll/linux/xml/mail_form.h"
#include "quoll/message/received_command.h"

namespace quoll::compose {
namespace {

[[noreturn]] void fail() {
  throw std::system_error(errno, std::generic_category());
}

/// A stream to a descriptor that keeps the first error and writes nothing after it: GMime's
/// encoders do not tell what their last bytes met.
struct ErrorKeepingStream {
  GMimeStreamPipe pipe;
  int error;
};

ssize_t write_or_keep_error(GMimeStream* stream, const char* bytes, size_t size) {
  int& error = reinterpret_cast<ErrorKeepingStream*>(stream)->error;
  if (error != 0) {
    errno = error;
    return -1;
  }
  auto* const pipe = GMIME_STREAM_CLASS(g_type_class_peek(GMIME_TYPE_STREAM_PIPE));
  const ssize_t written = pipe->write(stream, bytes, size);
  error = written < 0 ? errno : 0;
  return written;
}

GMimeStream* error_keeping_stream(int fd) {
  static const GType type = g_type_register_static_simple(
      GMIME_TYPE_STREAM_PIPE, "QuollErrorKeepingStream", sizeof(GMimeStreamPipeClass),
      [](gpointer its_class, gpointer) {
        GMIME_STREAM_CLASS(its_class)->write = write_or_keep_error;
      },
      sizeof(ErrorKeepingStream), nullptr, G_TYPE_FLAG_NONE);
  auto* const stream = GMIME_STREAM(g_object_new(type, nullptr));
  g_mime_stream_construct(stream, 0, -1);
  GMIME_STREAM_PIPE(stream)->fd = fd;
  g_mime_stream_pipe_set_owner(GMIME_STREAM_PIPE(stream), FALSE);
  return stream;
}

/// Writes a message piece by piece, with the line ends of mail.
class Output {
 public:
  // A pipe's stream neither seeks nor waits for the disk.
  explicit Output(int fd) : format_(g_mime_format_options_new()) {
    file_.reset(error_keeping_stream(fd));
    stream_.reset(g_mime_stream_buffer_new(file_.get(), GMIME_STREAM_BUFFER_BLOCK_WRITE));
    g_mime_format_options_set_param_encoding_method(format_.get(),
                                                    GMIME_PARAM_ENCODING_METHOD_RFC2231);
    g_mime_format_options_set_newline_format(format_.get(), GMIME_NEWLINE_FORMAT_DOS);
  }

  void text(std::string_view text) {
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
    if (const int error = reinterpret_cast<ErrorKeepingStream*>(file_.get())->error) {
      throw std::system_error(error, std::generic_category());
    }
  }

 private:
  static void check(ssize_t written) {
    if (written < 0) {
      fail();
    }
  }

  FormatHandle format_;
  MimeHandle<GMimeStream> file_;
  MimeHandle<GMimeStream> stream_;
};

posix::UniqueFd open_inside(int folder, const std::string& path) {
  posix::UniqueFd file(
      openat(folder, path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
  if (!file) {
    fail();
  }
  return file;
}

/// Whoever had the file open before it was taken can let it grow and shrink, also meanwhile.
void check_size(int file, const WaitingFile& taken) {
  struct stat status {};
  if (fstat(file, &status) != 0) {
    fail();
  }
  if (static_cast<std::uint64_t>(status.st_size) != taken.size) {
    throw FileHasChanged();
  }
}

ReceivedCommand command_in(int taken_folder) {
  const posix::UniqueFd file = open_inside(taken_folder, "command");
  struct stat status {};
  std::string text;
  bool ended = false;
  if (fstat(file.get(), &status) != 0 ||
      !posix::read_until(file.get(), text, static_cast<std::size_t>(status.st_size), ended)) {
    fail();
  }
  return read_received_command(text);
}

std::string text_of(const foundation::Value& field) {
  const std::string* const text = field.text();
  return text != nullptr ? *text : std::string();
}

std::string subject_of(const ExtensionMessage& message, const std::vector<WaitingFile>& files) {
  std::string subject = one_line(text_of(message.subject()));
  if (subject.empty() && !files.empty()) {
    const std::size_t more = files.size() - 1;
    subject =
        one_line(files.front().name) + (more == 0 ? "" : " and " + std::to_string(more) + " more");
  }
  return subject;
}

/// Writes headers, and notes what a client is told of them.
class Headers {
 public:
  Headers() = default;

  void add_subject(const std::string& subject) {
    append_header(text_, "X-Unsent", "1");
    append_header(text_, "Subject", header_text(subject));
  }
  /// Answers the addresses as people write them.
  std::vector<std::string> add_addresses(std::string_view name, const foundation::Value& joined) {
    Addresses addresses = read_addresses(text_of(joined));
    std::string value;
    for (const std::string& one : addresses.written) {
      value.append(value.empty() ? "" : ", ").append(one);
    }
    if (!value.empty()) {
      append_header(text_, name, value);
    }
    not_plain_ += addresses.not_plain;
    return std::move(addresses.plain);
  }
  /// Of the addresses so far.
  [[nodiscard]] std::size_t not_plain() const { return not_plain_; }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
  std::size_t not_plain_ = 0;
};

// Writes the parts one by one. GMime would hold every part, with a descriptor for each, until the
// whole message is written.
void write_parts(Output& out, GMimeObject* body, int taken_folder,
                 const std::vector<WaitingFile>& files) {
  if (files.empty()) {
    out.object(body);
    return;
  }
  const MimeHandle<GMimeMultipart> mixed(g_mime_multipart_new_with_subtype("mixed"));
  set_boundary(mixed.get());
  const std::string boundary = std::string("--") + g_mime_multipart_get_boundary(mixed.get());
  out.headers(GMIME_OBJECT(mixed.get()));
  out.text("\r\n" + boundary + "\r\n");
  out.object(body);
  for (const WaitingFile& file : files) {
    out.text("\r\n" + boundary + "\r\n");
    const posix::UniqueFd open = open_inside(taken_folder, path_of(file));
    check_size(open.get(), file);
    out.object(attachment_part(file.name, open.get(), file.size).get());
    check_size(open.get(), file);
  }
  out.text("\r\n" + boundary + "--\r\n");
}

}  // namespace

void prepare_to_write() {
  g_mime_init();
  g_free(g_content_type_guess("a.txt", nullptr, 0, nullptr));
  static_cast<void>(xml::load_mail_reader());  // without it, a draft with HTML cannot be written
}

void write_message(int taken_folder, int output) {
  const std::vector<WaitingFile> files = waiting_files(taken_folder);
  DraftFields fields;
  Headers headers;
  DraftBodies bodies;
  {
    const ReceivedCommand command = command_in(taken_folder);
    const ExtensionMessage& message = *command.message;
    fields.subject = subject_of(message, files);
    headers.add_subject(fields.subject);
    static_cast<void>(headers.add_addresses("From", message.from()));
    const std::size_t senders = headers.not_plain();
    fields.to = headers.add_addresses("To", message.toString());
    fields.cc = headers.add_addresses("Cc", message.ccString());
    fields.bcc = headers.add_addresses("Bcc", message.bccString());
    fields.not_plain = headers.not_plain() - senders;
    bodies = draft_bodies(text_of(message.plainBody()), text_of(message.htmlBody()));
  }
  fields.subject = without_encoded_words(fields.subject);
  fields.text = clean_lines(bodies.text);
  Output out(output);
  out.text(headers.text());
  out.text("MIME-Version: 1.0\r\n");
  write_parts(out, body_part(bodies).get(), taken_folder, files);
  out.finish();
  append_fields(output, fields);
}

}  // namespace quoll::compose

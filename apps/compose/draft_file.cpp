#include "apps/compose/draft_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include "apps/compose/cannot_compose.h"
#include "apps/compose/compose_command.h"
#include "apps/compose/message_headers.h"
#include "apps/compose/mime_parts.h"
#include "apps/compose/places.h"

namespace quoll::compose {
namespace {

[[noreturn]] void cannot_write(int error) {
  throw CannotCompose(std::string("the draft cannot be written: ") + std::strerror(error));
}

/// A file that has a temporary name until it is complete, and is removed if it never is.
class NewFile {
 public:
  explicit NewFile(const std::string& folder)
      : folder_(folder), path_(folder + "/" + std::string(kUnfinishedDraft) + "XXXXXX") {
    fd_ = mkostemp(path_.data(), O_CLOEXEC);
    if (fd_ < 0) {
      cannot_write(errno);
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (!path_.empty()) {
      unlink(path_.c_str());
    }
  }

  /// The descriptor, which the stream that writes to it will close.
  [[nodiscard]] int fd() const { return fd_; }

  /// Gives the file its final name, the first free one of this second, and answers its path. A name
  /// that a mail client was given is not free: cleaning that draft would remove this one too.
  std::string name_it() {
    const std::string given = given_folder();
    std::array<char, 32> now{};
    const std::time_t time = std::time(nullptr);
    std::tm local{};
    localtime_r(&time, &local);
    std::strftime(now.data(), now.size(), "%Y%m%d-%H%M%S", &local);
    for (unsigned number = 0;; ++number) {
      const std::string suffix = number == 0 ? "" : "-" + std::to_string(number);
      std::string name = "/";
      name.append(now.data()).append(suffix);
      if (access((given + name).c_str(), F_OK) == 0) {
        continue;
      }
      std::string named = folder_ + name + ".eml";
      if (renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, named.c_str(), RENAME_NOREPLACE) == 0) {
        path_.clear();
        return named;
      }
      if (errno != EEXIST) {
        cannot_write(errno);
      }
    }
  }

 private:
  std::string folder_;
  std::string path_;
  int fd_ = -1;
};

/// Writes a message piece by piece, with the line ends of mail.
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

// Writes the parts one by one. GMime would hold every part, with a descriptor for each, until the
// whole message is written.
void write_message(Output& out, GMimeMessage* message, GMimeObject* body,
                   const std::vector<TakenFile>& files) {
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
    posix::UniqueFd opened(open(file.path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened) {
      throw CannotCompose(file.name + " cannot be read: " + std::strerror(errno));
    }
    out.object(attachment_part(file.name, std::move(opened)).get());
  }
  out.text("\r\n" + boundary + "--\r\n");
}

}  // namespace

std::string write_draft(const ExtensionMessage& message, const std::vector<TakenFile>& files) {
  NewFile file(drafts_folder());
  Output out(file.fd());
  const auto headers = message_with_headers(message);
  const auto body = body_part(
      draft_bodies(text_of_field(message.plainBody()), text_of_field(message.htmlBody())));
  write_message(out, headers.get(), body.get(), files);
  out.finish();
  return file.name_it();
}

}  // namespace quoll::compose

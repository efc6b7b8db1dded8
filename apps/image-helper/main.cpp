#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>
#include <vector>

#include "apps/image-helper/codecs/readers.h"
#include "apps/image-helper/codecs/writers.h"
#include "apps/image-helper/confine.h"
#include "quoll/linux/image_helper/answers.h"
#include "quoll/linux/image_helper/memory_file.h"
#include "quoll/linux/posix/descriptor_io.h"

// Reads one image file from standard input and writes the requested form of it to standard output;
// both are files that can seek. A failure is one line on standard error.

namespace {

using namespace quoll::image_helper;

void write_size(PictureSource& source, int descriptor) {
  const Picture& picture = source.picture();
  const SizeAnswer size{picture.width, picture.height};
  // An image can be shown if it can be read to its end.
  std::vector<unsigned char> row(picture.row_bytes());
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    source.read(row.data());
  }
  if (!quoll::posix::write_all(descriptor,
                               {reinterpret_cast<const unsigned char*>(&size), sizeof size})) {
    throw ImageError(std::strerror(errno));
  }
}

struct Request {
  std::string_view name;
  void (*answer)(PictureSource& source, int descriptor);
};

constexpr Request kRequests[] = {{"size", write_size}, {"png", write_png}, {"tiff", write_tiff}};

/// The image's bytes are looked at only after the file was mapped and everything else was given up.
void answer(const Request& request) {
  struct stat status = {};
  if (fstat(STDIN_FILENO, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0) {
    throw ImageError("there are no bytes");
  }
  const Mapping file(STDIN_FILENO, static_cast<std::size_t>(status.st_size));
  if (!file.good()) {
    throw ImageError(std::strerror(errno));
  }
  confine();
  request.answer(*open_picture(file.bytes()), STDOUT_FILENO);
  seal(STDOUT_FILENO);
}

int fail(const char* reason) {
  std::fprintf(stderr, "%s\n", reason);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  limit_resources();
  const std::string_view wanted = argc == 2 ? argv[1] : "";
  for (const Request& request : kRequests) {
    if (request.name != wanted) {
      continue;
    }
    try {
      answer(request);
      return 0;
    } catch (const std::bad_alloc&) {
      return fail("the image needs more memory than the limit");
    } catch (const std::exception& exception) {
      return fail(exception.what());
    }
  }
  if (wanted == "--version") {
    std::puts("quoll-image-helper " QUOLL_VERSION);
    return 0;
  }
  std::fputs("usage: quoll-image-helper size|png|tiff <IMAGE >RESULT\n", stderr);
  return 2;
}

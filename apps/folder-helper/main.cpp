#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <ctime>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "apps/folder-helper/confine.h"
#include "apps/folder-helper/walk.h"
#include "apps/folder-helper/zip.h"
#include "quoll/linux/posix/descriptor_io.h"

// Packs the folder that is its standard input into one ZIP file, its standard output. What it
// leaves out stands on standard error, and behind that a line "packed". A failure is one line
// there. NAME is what the folder is called in it.

namespace {

using namespace quoll::folder_helper;

/// Only looks whether there is too much, before anything is written.
class Nothing final : public Visitor {
 public:
  void folder(const std::string& /*path*/, const struct stat& /*status*/) override {}
  void file(const std::string& /*path*/, const struct stat& /*status*/, int /*parent*/,
            const char* /*name*/) override {}
  void left_out(const std::string& /*path*/, std::string_view /*why*/) override {}
};

/// Answers what was left out.
std::string pack(const std::string& name) {
  struct stat folder = {};
  struct stat output = {};
  if (fstat(STDIN_FILENO, &folder) != 0 || !S_ISDIR(folder.st_mode) ||
      fstat(STDOUT_FILENO, &output) != 0 || !S_ISREG(output.st_mode)) {
    throw PackError("there is no folder, or no file to write");
  }
  if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) {
    throw PackError("the system has no names in UTF-8");
  }
  tzset();  // what it reads cannot be read later
  confine(STDIN_FILENO);
  Nothing nothing;
  walk(STDIN_FILENO, name, output, nothing);
  Zip zip(STDOUT_FILENO);
  walk(STDIN_FILENO, name, output, zip);
  std::string told = zip.end();
  // A network file system tells only now that it has lost what was written.
  if (close(STDOUT_FILENO) != 0 && errno != EINTR) {
    throw PackError(quoll::posix::error_words(errno));
  }
  return told;
}

int fail(const char* reason) {
  std::fprintf(stderr, "%s\n", reason);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  limit_resources();
  const std::string_view wanted = argc > 1 ? argv[1] : "";
  if (argc == 2 && wanted == "--version") {
    std::puts("quoll-folder-helper " QUOLL_VERSION);
    return 0;
  }
  if (argc != 3 || wanted != "zip") {
    std::fputs("usage: quoll-folder-helper zip NAME <FOLDER >ZIP\n", stderr);
    return 2;
  }
  try {
    const std::string told = pack(argv[2]) + "packed\n";
    return quoll::posix::write_all(STDERR_FILENO, told) ? 0 : 1;
  } catch (const std::bad_alloc&) {
    return fail("the folder needs more memory than the limit");
  } catch (const std::exception& exception) {
    return fail(exception.what());
  }
}

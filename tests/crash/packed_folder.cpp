#include "tests/crash/packed_folder.h"

#include <sstream>

#include "tests/integration/process.h"

namespace quoll::crash {

namespace {

constexpr const char* kCompare = R"(
import os, sys, zipfile
zip, folder = sys.argv[1:]
above = os.path.dirname(folder)
archive = zipfile.ZipFile(zip)
packed = set()
for entry in archive.infolist():
    path = os.path.join(above, entry.filename)
    if not (os.path.isdir(path) if entry.is_dir()
            else archive.read(entry) == open(path, 'rb').read()):
        sys.exit(entry.filename + ' is not as it was')
    packed.add(entry.filename.rstrip('/'))
def show_missing(path):
    if path not in packed:
        print(path)
    elif os.path.isdir(os.path.join(above, path)):
        for name in os.listdir(os.path.join(above, path)):
            show_missing(path + '/' + name)
show_missing(os.path.basename(folder))
)";

}  // namespace

std::optional<std::set<std::string>> missing_of_zip(const std::string& zip,
                                                    const std::string& folder) {
  const test::Ended ended = test::run({"python3", "-c", kCompare, zip, folder});
  if (ended.status != 0) {
    return std::nullopt;
  }
  std::set<std::string> missing;
  std::istringstream lines(ended.output);
  for (std::string line; std::getline(lines, line);) {
    missing.insert(line);
  }
  return missing;
}

}  // namespace quoll::crash

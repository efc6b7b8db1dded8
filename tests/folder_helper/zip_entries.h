#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/integration/process.h"

namespace quoll::test {

inline std::vector<std::string> split_lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// What a ZIP file holds, as another reader finds it: "name size mode", each checked. The
/// word "SECRET" in a file shows as its mode.
inline std::vector<std::string> zip_entries(const std::string& path) {
  const Ended ended = run({"python3", "-c",
                           "import sys, zipfile\n"
                           "archive = zipfile.ZipFile(sys.argv[1])\n"
                           "bad = archive.testzip()\n"
                           "for entry in archive.infolist():\n"
                           "  print(entry.filename, entry.file_size,\n"
                           "        'bad' if entry.filename == bad else\n"
                           "        'secret' if b'SECRET' in archive.read(entry) else\n"
                           "        oct(entry.external_attr >> 16 & 0o777)[2:])\n",
                           path},
                          {{"PYTHONIOENCODING", "utf-8"}});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  return split_lines(ended.output);
}

}  // namespace quoll::test

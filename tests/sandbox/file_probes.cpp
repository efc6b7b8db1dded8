#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/sandbox/probe_table.h"

namespace quoll::test {

std::string setting(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr ? value : "";
}

namespace {

std::string home(const std::string& name) {
  return setting("QUOLL_PROBE_HOME") + "/" + name;
}

std::string group(const std::string& name) {
  return setting("QUOLL_PROBE_GROUP") + "/" + name;
}

bool opens(const std::string& path, int flags) {
  return open(path.c_str(), flags | O_CLOEXEC, 0600) >= 0;
}

std::string of_victim(const char* name) {
  return "/proc/" + setting("QUOLL_PROBE_VICTIM") + "/" + name;
}

/// As staging gives a name to a file that has none.
bool links(const std::string& from, const std::string& to) {
  return linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

bool links_what_is_open(int file) {
  return links("/proc/self/fd/" + std::to_string(file), group("new"));
}

bool links_by_an_open_folder() {
  const int folder = open(group("").c_str(), O_PATH | O_CLOEXEC);
  return linkat(folder, "staged", folder, "new", 0) == 0;
}

bool reads_a_link() {
  char target = 0;
  return readlink(home("pointer").c_str(), &target, 1) == 1;
}

bool reads_inherited() {
  char byte = 0;
  return read(std::atoi(setting("QUOLL_PROBE_DESCRIPTOR").c_str()), &byte, 1) == 1;
}

constexpr Probe kProbes[] = {
    {"read what was selected", [] { return opens(home("selected"), O_RDONLY); }},
    {"read another file", [] { return opens(home("unselected"), O_RDONLY); }},
    {"read a file by another way",
     [] { return opens("/proc/self/root" + home("unselected"), O_RDONLY); }},
    {"read another program's environment", [] { return opens(of_victim("environ"), O_RDONLY); }},
    {"read another program's command line", [] { return opens(of_victim("cmdline"), O_RDONLY); }},
    {"list the sockets of all programs", [] { return opens("/proc/net/unix", O_RDONLY); }},
    {"read where a link leads", reads_a_link},
    {"read another program's memory", [] { return opens(of_victim("mem"), O_RDONLY); }},
    {"read an inherited descriptor", reads_inherited},
    {"list the home folder", [] { return opendir(home("").c_str()) != nullptr; }},
    {"write what was selected", [] { return opens(home("selected"), O_WRONLY); }},
    {"write another file", [] { return opens(home("unselected"), O_WRONLY | O_APPEND); }},
    {"truncate a file", [] { return truncate(home("unselected").c_str(), 1) == 0; }},
    {"make a file", [] { return opens(home("new"), O_WRONLY | O_CREAT | O_EXCL); }},
    {"make a file in the temporary folder", [] { return opens("/tmp", O_WRONLY | O_TMPFILE); }},
    {"make a folder", [] { return mkdir(home("new").c_str(), 0700) == 0; }},
    {"make a link", [] { return symlink("x", home("new").c_str()) == 0; }},
    {"make a link in the group", [] { return symlink("x", group("new").c_str()) == 0; }},
    {"make a pipe", [] { return mkfifo(group("new").c_str(), 0600) == 0; }},
    {"remove a file", [] { return unlink(home("unselected").c_str()) == 0; }},
    {"remove a folder", [] { return rmdir(home("other").c_str()) == 0; }},
    {"rename a file",
     [] { return rename(home("unselected").c_str(), home("other/new").c_str()) == 0; }},
    {"move a file into the group",
     [] { return rename(home("unselected").c_str(), group("new").c_str()) == 0; }},
    {"move a file out of the group",
     [] { return rename(group("staged").c_str(), home("new").c_str()) == 0; }},
    {"link a selected file into the group", [] { return links(home("selected"), group("new")); }},
    {"link another file into the group", [] { return links(home("unselected"), group("new")); }},
    {"link an open file into the group",
     [] { return links_what_is_open(open(home("selected").c_str(), O_RDONLY | O_CLOEXEC)); }},
    {"link standard input into the group", [] { return links_what_is_open(STDIN_FILENO); }},
    {"link by an open folder", links_by_an_open_folder},
    {"link a file", [] { return links(home("unselected"), home("new")); }},
    {"name a file without a name",
     [] {
       return links_what_is_open(open(group("").c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0600));
     }},
    {"change a mode", [] { return chmod(home("unselected").c_str(), 0644) == 0; }},
    {"change a mode in a folder",
     [] { return fchmodat(AT_FDCWD, home("unselected").c_str(), 0644, 0) == 0; }},
    {"change an owner", [] { return chown(home("unselected").c_str(), getuid(), getgid()) == 0; }},
    {"change the times",
     [] { return utimensat(AT_FDCWD, home("unselected").c_str(), nullptr, 0) == 0; }},
    {"change an attribute",
     [] { return setxattr(home("unselected").c_str(), "user.x", "x", 1, 0) == 0; }},
    {"remove an attribute", [] { return removexattr(home("marked").c_str(), "user.quoll") == 0; }},
    {"write into the group", [] { return opens(group("new"), O_WRONLY | O_CREAT | O_EXCL); }},
};

}  // namespace

std::span<const Probe> file_probes() {
  return kProbes;
}

}  // namespace quoll::test

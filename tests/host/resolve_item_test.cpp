#include "apps/share/request/resolve_item.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <vector>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"
#include "tests/support/temporary_folder.h"

namespace quoll::share {
namespace {

/// A folder with awkward names, which is the working directory as long as it lives.
class ResolveItem : public testing::Test {
 protected:
  ResolveItem() : before_(std::filesystem::current_path()) {
    for (const char* const name :
         {"plain.txt", "a b,c.txt", "x y", "x%20y", "only%20raw", "q?s#f", "gr\xC3\xBC\xC3\x9F.txt",
          "bad\xFF.txt", "-dash", "line\nbreak", "100%", "http:", "a;b", "tail "}) {
      folder_.write(name, "x");
    }
    std::filesystem::create_directory(folder_.path("folder"));
    std::filesystem::create_symlink("plain.txt", folder_.path("link"));
    std::filesystem::create_symlink("nowhere", folder_.path("dangling"));
    std::filesystem::create_symlink("folder", folder_.path("to-folder"));
    std::filesystem::current_path(folder_.path());
  }
  ~ResolveItem() override { std::filesystem::current_path(before_); }

  test::TemporaryFolder folder_;
  std::filesystem::path before_;
};

TEST_F(ResolveItem, FilesThatAreTaken) {
  struct Row {
    const char* reason;
    std::string given;
    std::string name;
  };
  char host[256] = {};
  ASSERT_EQ(gethostname(host, sizeof host - 1), 0);
  const std::string root = folder_.path() + "/";
  const std::vector<Row> rows{
      {"an absolute path", root + "plain.txt", "plain.txt"},
      {"a relative path", "plain.txt", "plain.txt"},
      {"a relative path with dots", "./folder/../plain.txt", "./folder/../plain.txt"},
      {"a name with spaces and commas", "a b,c.txt", "a b,c.txt"},
      {"an escaped URL", "file://" + root + "x%20y", "x y"},
      {"a raw URL", "file://" + root + "a b,c.txt", "a b,c.txt"},
      {"a name that looks escaped, in a URL that is", "file://" + root + "x%2520y", "x%20y"},
      {"a name that looks escaped, in a URL that is not", "file://" + root + "only%20raw",
       "only%20raw"},
      {"raw UTF-8 in a URL", "file://" + root + "gr\xC3\xBC\xC3\x9F.txt", "gr\xC3\xBC\xC3\x9F.txt"},
      {"escaped UTF-8 in a URL", "file://" + root + "gr%C3%BC%C3%9F.txt", "gr\xC3\xBC\xC3\x9F.txt"},
      {"question mark and mark cut nothing", "file://" + root + "q?s#f", "q?s#f"},
      {"the same, escaped", "file://" + root + "q%3Fs%23f", "q?s#f"},
      {"a semicolon cuts nothing", "file://" + root + "a;b", "a;b"},
      {"a lone percent sign", "file://" + root + "100%", "100%"},
      {"the host localhost", "file://LocalHost" + root + "plain.txt", "plain.txt"},
      {"the host of this machine", std::string("file://") + host + root + "plain.txt", "plain.txt"},
      {"one slash", "file:" + root + "plain.txt", "plain.txt"},
      {"a scheme in capitals", "FILE://" + root + "plain.txt", "plain.txt"},
      {"a name that is not UTF-8", "bad\xFF.txt", "bad\xFF.txt"},
      {"the same in a URL, escaped", "file://" + root + "bad%FF.txt", "bad\xFF.txt"},
      {"a name that begins with a dash", "-dash", "-dash"},
      {"a line break in a name", "line\nbreak", "line\nbreak"},
      {"white space at the end of a name", "tail ", "tail "},
      {"an existing path is no link", "http:", "http:"},
      {"a symbolic link to a file", "link", "link"},
  };
  for (const Row& row : rows) {
    const ResolvedItem resolved = resolve_item(row.given);
    ASSERT_TRUE(resolved.url) << row.reason << ": " << resolved.refusal;
    EXPECT_TRUE(resolved.url->isFileURL()) << row.reason;
    EXPECT_EQ(foundation::file_system_path(resolved.url), root + row.name) << row.reason;
  }
}

TEST_F(ResolveItem, FoldersThatAreTaken) {
  struct Row {
    const char* reason;
    std::string given;
    std::string path;
  };
  const std::string root = folder_.path() + "/";
  const std::vector<Row> rows{
      {"a folder", "folder", root + "folder"},
      {"with a slash", "folder//", root + "folder"},
      {"by URL", "file://" + root + "folder/", root + "folder"},
      {"a link to a folder is called as it is", "to-folder", root + "to-folder"},
      {"the working folder has a name", ".", folder_.path()},
      {"the one above has one", "folder/..", folder_.path()},
      {"the root", "/", "/"},
  };
  for (const Row& row : rows) {
    const ResolvedItem resolved = resolve_item(row.given);
    ASSERT_TRUE(resolved.url) << row.reason << ": " << resolved.refusal;
    EXPECT_EQ(foundation::file_system_path(resolved.url), row.path) << row.reason;
    EXPECT_TRUE(resolved.url->absoluteString().ends_with('/')) << row.reason;
  }
}

TEST_F(ResolveItem, LinksThatAreTaken) {
  struct Row {
    const char* reason;
    std::string given;
    std::string url;
  };
  const std::vector<Row> rows{
      {"a link stays as it is", "https://example.org/a?b=c#d", "https://example.org/a?b=c#d"},
      {"what is escaped is not escaped again", "http://h/a%20b", "http://h/a%20b"},
      {"a space", "http://h/a b", "http://h/a%20b"},
      {"quotes and brackets", "http://h/\"<>\"", "http://h/%22%3C%3E%22"},
      {"no ASCII", "http://h/\xC3\xA4", "http://h/%C3%A4"},
      {"a lone percent sign beside an escape", "http://h/100%/%41 x", "http://h/100%25/%41%20x"},
      {"a second mark", "http://h/#a#b", "http://h/#a%23b"},
      {"white space around it", " https://h/\n", "https://h/"},
      {"a mail address", "mailto:joe@example.org", "mailto:joe@example.org"},
      {"a scheme with a plus sign", "git+ssh://h/r", "git+ssh://h/r"},
      {"no scheme", "www.example.org/x", "http://www.example.org/x"},
      {"a mail address with a subject", "mailto:joe@h?subject=a b", "mailto:joe@h?subject=a%20b"},
      {"a host in brackets", "http://[::1]/", "http://[::1]/"},
      {"a server with files for everybody", "ftp://h/f", "ftp://h/f"},
      {"a scheme of some program", "tel:123", "tel:123"},
      {"no scheme, in capitals", "WWW.example.org", "http://WWW.example.org"},
  };
  for (const Row& row : rows) {
    const ResolvedItem resolved = resolve_item(row.given);
    ASSERT_TRUE(resolved.url) << row.reason << ": " << resolved.refusal;
    EXPECT_EQ(resolved.url->absoluteString(), row.url) << row.reason;
  }
}

TEST_F(ResolveItem, Refused) {
  struct Row {
    const char* reason;
    std::string given;
    const char* refusal;
  };
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const posix::UniqueFd socket_file(socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, "socket", sizeof address.sun_path - 1);
  ASSERT_EQ(bind(socket_file.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  const std::vector<Row> rows{
      {"nothing", "", "the name is empty"},
      {"a zero byte", std::string("a\0b", 3), "the name holds a zero byte"},
      {"an escaped zero byte", "file:///tmp/%00", "the name holds a zero byte"},
      {"a missing file", "/no/such/file", "no such file"},
      {"a missing file by URL", "file:///no/such/file", "no such file"},
      {"a file as a folder", "plain.txt/x", "no such file"},
      {"a link to nowhere", "dangling", "no such file"},
      {"free text", "buy milk", "no such file"},
      {"free text with a colon", "note: buy milk", "no such file"},
      {"a drive letter", "C:\\notes.txt", "no such file"},
      {"a scheme and nothing else", "https:", "no such file"},
      {"the home folder's sign is a name like any other", "~/plain.txt", "no such file"},
      {"a device", "/dev/null", "it is a device"},
      {"a pipe", "pipe", "it is a pipe"},
      {"a socket", "socket", "it is a socket"},
      {"another machine", "file://elsewhere.example/plain.txt", "the file is on another computer"},
      {"a name longer than any", std::string(10'000, 'x'), "file name too long"},
      {"a file URL without a path", "file://localhost", "no such file"},
      {"a host and nothing else", "example.org", "no such file"},
      {"a mail address", "joe@example.org", "no such file"},
      {"a host and a port", "example.org:8080/x", "it is no link"},
      {"this machine and a port", "localhost:3000", "it is no link"},
      {"a web link without a host", "https:///x", "the link names no host"},
      {"the same in capitals", "HTTP:///", "the link names no host"},
      {"one slash too few", "http:/example.org", "the link names no host"},
      {"no slash", "https:example.org", "the link names no host"},
      {"a port and no host", "http://:80/", "the link names no host"},
      {"a user and no host", "ftp://joe@/x", "the link names no host"},
      {"a question and no host", "https://?q", "the link names no host"},
      {"a link of two lines", "https://h/a\nb", "the link has a line break"},
      {"the same, as other systems write it", "https://h/a\r\nb", "the link has a line break"},
      {"a mail address of two lines", "mailto:joe@h\nbcc:x@h", "the link has a line break"},
      {"a share of a server", "smb://server/share/file.pdf", "it is a remote file"},
      {"a phone", "MTP://phone/a.jpg", "it is a remote file"},
      {"a server with files", "sftp://server/a", "it is a remote file"},
      {"the waste", "trash:///a.txt", "it is a place of the file manager, not a file"},
      {"what was used last", "recent:///a", "it is a place of the file manager, not a file"},
      {"a page of a browser", "about:config", "it means something in one browser only"},
      {"what a page holds", "blob:https://h/1", "it means something in one browser only"},
      {"a program of a page", "javascript:x()", "it means something in one browser only"},
  };
  for (const Row& row : rows) {
    const ResolvedItem resolved = resolve_item(row.given);
    EXPECT_FALSE(resolved.url) << row.reason;
    EXPECT_EQ(resolved.refusal, row.refusal) << row.reason;
  }
}

TEST_F(ResolveItem, WhatToDoIsSaidWhereItHelps) {
  struct Row {
    std::string given;
    std::string advice;
  };
  const std::vector<Row> rows{
      {"example.org", "for a link write https://example.org"},
      {"en.example.DE/a b\x1B", "for a link write https://en.example.DE/a b\\x1B"},
      {"joe@example.org", "to send it to this address write --to joe@example.org"},
      {"joe\x1B@example.org", "to send it to this address write --to joe\\x1B@example.org"},
      {"example.org:80/x", "for a link write https://example.org:80/x"},
      {"https:///x", "write it as https://example.org/"},
      {"smb://s/f", "copy it to this computer first, or open its folder in the file manager"},
      {"trash:///f", "copy the file into a folder and share it from there"},
      {"joe@localhost", ""},
      {"joe smith@example.org", ""},
      {"@example.org", ""},
      {"joe@@example.org", ""},
      {"report.pdf", ""},
      {"no-such-file", ""},
      {".com", ""},
      {"a/example.org", ""},
      {"/example.org", ""},
      {"/dev/null", ""},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(resolve_item(row.given).advice, row.advice) << row.given;
  }
}

TEST_F(ResolveItem, InAFolderThatIsTooDeepForAPath) {
  const std::string name(200, 'd');
  for (int i = 0; i < 25; ++i) {
    ASSERT_EQ(mkdir(name.c_str(), 0700), 0);
    ASSERT_EQ(chdir(name.c_str()), 0);
  }
  ASSERT_EQ(mkdir("folder", 0700), 0);
  const posix::UniqueFd file(open("folder/plain.txt", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  for (const char* const given : {"folder/plain.txt", "file:folder/plain.txt"}) {
    const ResolvedItem resolved = resolve_item(given);
    EXPECT_FALSE(resolved.url) << resolved.url->absoluteString();
    EXPECT_EQ(resolved.refusal, "the working folder has no path that can be used");
  }
  EXPECT_TRUE(resolve_item(folder_.path("plain.txt")).url);
}

TEST_F(ResolveItem, UnreadableFile) {
  ASSERT_EQ(chmod(folder_.path("plain.txt").c_str(), 0), 0);
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  const uid_t user = geteuid();
  if (user == 0) {
    ASSERT_EQ(seteuid(65534), 0);  // the superuser may read everything
  }
  const ResolvedItem resolved = resolve_item(folder_.path("plain.txt"));
  ASSERT_EQ(seteuid(user), 0);
  EXPECT_FALSE(resolved.url);
  EXPECT_EQ(resolved.refusal, "permission denied");
}

}  // namespace
}  // namespace quoll::share

// The helper as it was built, with folders in which everything lies that may be somewhere.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <atomic>
#include <cstring>
#include <random>
#include <thread>

#include "quoll/linux/posix/descriptor_io.h"
#include "tests/folder_helper/zip_entries.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

class HostileFolder : public testing::Test {
 protected:
  HostileFolder() {
    fs::create_directory(top());
    home_.write("secret", "SECRET");
  }

  [[nodiscard]] std::string top(const std::string& name = "") const {
    return home_.path("top/" + name);
  }
  /// Much would take hours if it were not refused; then the helper is ended.
  [[nodiscard]] Ended pack(const std::string& output = "out.zip") const {
    return run({"sh", "-c", "exec timeout 100 \"$0\" zip top <\"$1\" >\"$2\"", QUOLL_FOLDER_HELPER,
                top(), home_.path(output)});
  }
  [[nodiscard]] Names packed() const { return zip_entries(home_.path("out.zip")); }

  TemporaryFolder home_;
};

TEST_F(HostileFolder, FilesAreSortedAndNamedInUtf8) {
  for (const char* const name : {"b", "a b", "\xC3\xA4", "-dash", "line\nbreak", "back\\slash"}) {
    home_.write("top/" + std::string(name), name);
  }
  fs::create_directory(top("a"));
  fs::create_directory(top("empty"));
  home_.write("top/a/z", "");
  ASSERT_EQ(chmod(top("b").c_str(), 0700), 0);
  const Ended ended = pack();
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.errors, "packed\n");
  EXPECT_EQ(packed(),
            (Names{"top/ 0 755", "top/-dash 5 644", "top/a/ 0 755", "top/a/z 0 644",
                   "top/a b 3 644", "top/b 1 700", "top/back\\slash 10 644", "top/empty/ 0 755",
                   "top/line", "break 10 644", "top/\xC3\xA4 2 644"}));
  EXPECT_EQ(pack("again.zip").status, 0);
  EXPECT_EQ(read_file(home_.path("again.zip")), read_file(home_.path("out.zip")));
}

TEST_F(HostileFolder, WhatIsNoFileIsToldAndNeverFollowedOrOpened) {
  home_.write("top/bad\xFF", "x");
  fs::create_symlink(home_.path("secret"), top("link"));
  fs::create_directory_symlink(top(), top("loop"));
  fs::create_symlink("nowhere", top("dangling"));
  ASSERT_EQ(mkfifo(top("pipe").c_str(), 0600), 0);
  const posix::UniqueFd listening(socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, top("socket").c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listening.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  const Ended ended = pack();
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.errors,
            "its name is not UTF-8\ttop/bad%FF\nit is a symbolic link\ttop/dangling\n"
            "it is a symbolic link\ttop/link\nit is a symbolic link\ttop/loop\n"
            "it is a pipe\ttop/pipe\nit is a socket\ttop/socket\npacked\n");
  EXPECT_EQ(packed(), (Names{"top/ 0 755"}));
}

TEST_F(HostileFolder, ASparseTerabyteIsRefusedBeforeAnythingIsWritten) {
  home_.write("top/a", "x");
  home_.write("top/sparse", "");
  ASSERT_EQ(truncate(top("sparse").c_str(), off_t{1} << 40U), 0);
  const Ended ended = pack();
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors, "there is more than 4 GiB in it\n");
  EXPECT_EQ(fs::file_size(home_.path("out.zip")), 0U);
}

TEST_F(HostileFolder, MoreThan100000EntriesAreRefused) {
  const posix::UniqueFd folder = posix::open_file(top(), O_RDONLY | O_DIRECTORY);
  constexpr int kLinks = 50'000;  // a file system makes them sooner than files, but not all of one
  for (int i = 0; i < 100'001; ++i) {
    const std::string file = std::to_string(i / kLinks * kLinks);
    const std::string name = std::to_string(i);
    ASSERT_EQ(name == file ? mknodat(folder.get(), name.c_str(), S_IFREG | 0600, 0)
                           : linkat(folder.get(), file.c_str(), folder.get(), name.c_str(), 0),
              0);
  }
  const Ended ended = pack();
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors, "there are more than 100,000 files and folders in it\n");
  ASSERT_EQ(unlinkat(folder.get(), "7", 0), 0);
  EXPECT_EQ(pack().errors, "packed\n") << "as many may be";
}

TEST_F(HostileFolder, AFolderInside128OthersIsLeftOut) {
  posix::UniqueFd folder = posix::open_file(top(), O_RDONLY | O_DIRECTORY);
  for (int i = 0; i < 140; ++i) {
    ASSERT_EQ(mkdirat(folder.get(), "d", 0755), 0);
    folder = posix::open_file_at(folder.get(), "d", O_RDONLY | O_DIRECTORY);
  }
  const Ended ended = pack();
  EXPECT_EQ(ended.status, 0);
  EXPECT_TRUE(ended.errors.starts_with("it lies inside too many folders\ttop/d/d/"))
      << ended.errors;
  EXPECT_EQ(packed().size(), 129U);
}

TEST_F(HostileFolder, TheFileThatIsWrittenIsNotPackedIntoItself) {
  home_.write("top/a", "x");
  EXPECT_EQ(pack("top/out.zip").status, 0);
  EXPECT_EQ(zip_entries(top("out.zip")), (Names{"top/ 0 755", "top/a 1 644"}));
}

TEST_F(HostileFolder, WithoutAFolderOrAFileThereIsALine) {
  const Ended no_folder = run({"sh", "-c", "\"$0\" zip x </dev/null", QUOLL_FOLDER_HELPER});
  EXPECT_EQ(no_folder.status, 1);
  EXPECT_EQ(no_folder.errors, "there is no folder, or no file to write\n");
  const Ended no_file = run({"sh", "-c", "\"$0\" zip x </ | cat", QUOLL_FOLDER_HELPER});
  EXPECT_EQ(no_file.errors, "there is no folder, or no file to write\n");
}

/// Does to a folder, again and again, what others may do while it is packed.
class Meddler {
 public:
  explicit Meddler(std::string top, std::string secret, unsigned seed)
      : top_(std::move(top)), secret_(std::move(secret)), random_(seed), thread_([this] {
          while (!is_over_) {
            meddle();
          }
        }) {}
  Meddler(const Meddler&) = delete;
  Meddler& operator=(const Meddler&) = delete;
  ~Meddler() {
    is_over_ = true;
    thread_.join();
  }

 private:
  std::string some() {
    std::string path = top_;
    for (auto depth = random_() % 3 + 1; depth > 0; --depth) {
      path += "/" + std::to_string(random_() % 4);
    }
    return path;
  }

  /// Neither the secret nor a pipe.
  static posix::UniqueFd open_own(const std::string& path) {
    return posix::open_file(path, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK, 0600);
  }

  void meddle() {
    std::error_code failed;
    const std::string path = some();
    switch (random_() % 8) {
      case 0:
        fs::create_directories(path, failed);
        break;
      case 1:
        fs::remove_all(path, failed);
        break;
      case 2:
        fs::rename(path, some(), failed);
        break;
      case 3:
        fs::create_symlink(random_() % 2 == 0 ? secret_ : top_, path, failed);
        break;
      case 4:
        static_cast<void>(ftruncate(open_own(path).get(), static_cast<off_t>(random_() % 100'000)));
        break;
      case 5:
        static_cast<void>(mkfifo(path.c_str(), 0600));
        break;
      default:
        static_cast<void>(
            posix::write_all(open_own(path).get(), std::string(random_() % 50'000, 'x')));
    }
  }

  std::string top_;
  std::string secret_;
  std::mt19937 random_;
  std::atomic<bool> is_over_ = false;
  std::thread thread_;
};

TEST_F(HostileFolder, WhateverOthersDoMeanwhileTheFileIsWholeAndHoldsNothingFromElsewhere) {
  for (unsigned seed = 1; seed <= 15; ++seed) {
    Ended ended{};
    {
      const Meddler meddler(top(), home_.path("secret"), seed);
      ended = pack();
    }
    SCOPED_TRACE(seed);
    if (ended.status == 0) {
      EXPECT_TRUE(ended.errors.ends_with("packed\n")) << ended.errors;
      for (const std::string& entry : packed()) {
        EXPECT_TRUE(entry.starts_with("top/")) << entry;
        EXPECT_FALSE(entry.ends_with("bad") || entry.ends_with("secret")) << entry;
      }
    } else {
      EXPECT_EQ(ended.status, 1) << "it ends by itself";
      EXPECT_EQ(split_lines(ended.errors).size(), 1U) << ended.errors;
    }
  }
}

}  // namespace
}  // namespace quoll::test

#include "tests/crash/scene.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <stdexcept>

#include "quoll/foundation/base64.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/linux/posix/unique_fd.h"
#include "quoll/message/extension_message.h"
#include "tests/crash/packed_folder.h"
#include "tests/crash/stepper.h"

namespace quoll::crash {

namespace {

namespace fs = std::filesystem;

constexpr const char* kApplication = "it.vorlent.quoll2";
constexpr const char* kSources[] = {"letter.txt", "pages.bin", "holes.bin"};
constexpr const char* kFolder = "notes";
constexpr const char* kZip = "notes.zip";
constexpr const char* kImage = "image.png";
constexpr const char* kData = "data.txt";

bool is_first(Which which) {
  return which == Which::kFirst;
}

std::string link_of(Which which) {
  return is_first(which) ? "https://example.org/first" : "https://example.org/next";
}

std::string text_of(Which which) {
  return is_first(which) ? "the first words" : "the next words";
}

/// One pixel, black or white.
std::string image_of(Which which) {
  return std::string("data:image/gif;base64,") +
         (is_first(which) ? "R0lGODlhAQABAIAAAAAAAP///ywAAAAAAQABAAACAkQBADs="
                          : "R0lGODlhAQABAIAAAP///wAAACwAAAAAAQABAAACAkQBADs=");
}

std::string data_of(Which which) {
  return is_first(which) ? "data:,first" : "data:,next!";
}

/// As a line about what was left out names it.
std::string named(const std::string& given) {
  constexpr std::size_t kShown = 40;
  return given.starts_with("data:") && given.size() > kShown ? given.substr(0, kShown) + "..."
                                                             : given;
}

std::string some_bytes(Which which, std::size_t size) {
  std::minstd_rand random(is_first(which) ? 1 : 2);
  std::string bytes(size, '\0');
  for (char& byte : bytes) {
    byte = static_cast<char>(random() >> 8U);
  }
  return bytes;
}

void write(const std::string& path, const std::string& bytes) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

/// Bytes in the middle of nothing.
void write_with_holes(const std::string& path, const std::string& bytes) {
  constexpr off_t kSize = off_t{1} << 18;
  const posix::UniqueFd file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  if (ftruncate(file.get(), kSize) != 0 ||
      pwrite(file.get(), bytes.data(), bytes.size(), kSize / 2) < 0) {
    throw std::runtime_error("cannot write " + path);
  }
}

void set_past_time(const std::string& path) {
  const timespec past[2] = {{1'000'000'000, 1}, {1'000'000'000, 2}};
  utimensat(AT_FDCWD, path.c_str(), past, AT_SYMLINK_NOFOLLOW);
}

/// A folder of the selection, with a file that is more than its helper reads at once.
void write_folder(const std::string& path, Which which) {
  constexpr std::size_t kTwoBlocks = 200'001;
  write(path + "/list.txt", text_of(which));
  write(path + "/older/pages.bin", some_bytes(which, kTwoBlocks));
  for (const char* name : {"/list.txt", "/older/pages.bin", "/older", ""}) {
    set_past_time(path + name);
  }
}

/// "image_2.png" is "image.png" that found its name taken.
std::string without_number(const std::string& name) {
  const fs::path path(name);
  const std::string stem = path.stem();
  const std::size_t line = stem.rfind('_');
  const bool is_numbered = line != std::string::npos && line + 1 < stem.size() &&
                           stem.find_first_not_of("0123456789", line + 1) == std::string::npos;
  return (is_numbered ? stem.substr(0, line) : stem) + path.extension().string();
}

/// The leak check cannot work in a process that is traced.
std::string sanitizer_options() {
  const char* const given = std::getenv("ASAN_OPTIONS");
  return (given != nullptr ? std::string(given) + ":" : "") + "detect_leaks=0";
}

class Freely final : public Steps {
 public:
  Step at(const Call& /*call*/) override { return {}; }
  [[nodiscard]] bool is_done() const override { return true; }
};

/// The URL in the application's record of what it was given.
std::string opened_url(const std::string& record) {
  constexpr std::string_view kMark = "uri ";
  std::ifstream in(record, std::ios::binary);
  std::string line;
  return std::getline(in, line) && line.starts_with(kMark) ? line.substr(kMark.size()) : "";
}

}  // namespace

Scene::Scene()
    : environment_(bus_.environment()),
      application_({RECEIVER_DOUBLE, "bus", kApplication, "answer", bus_.path("record")},
                   environment_) {
  environment_["QUOLL_FOLDER_HELPER"] = QUOLL_FOLDER_HELPER;
  environment_["QUOLL_IMAGE_HELPER"] = QUOLL_IMAGE_HELPER;
  environment_["TMPDIR"] = temporary();
  environment_["LC_ALL"] = "C.UTF-8";
  environment_["ASAN_OPTIONS"] = sanitizer_options();
  fs::create_directories(temporary());
  write_sources(Which::kFirst);
  write_sources(Which::kNext);
  write_surroundings();
  if (application_.read_line() != "ready") {
    throw std::runtime_error("the application does not answer on the bus");
  }
}

std::string Scene::container() const {
  return bus_.path("containers/K7Q2M9XT4B.quoll");
}

std::string Scene::source_folder(Which which) const {
  return bus_.path(is_first(which) ? "first" : "next");
}

std::string Scene::shared_folder(Which which) const {
  return source_folder(which) + "/" + kFolder;
}

const Contents& Scene::whole(Which which) const {
  return is_first(which) ? staged_.first : staged_.next;
}

Contents& Scene::whole(Which which) {
  return is_first(which) ? staged_.first : staged_.next;
}

void Scene::write_sources(Which which) {
  constexpr std::size_t kTwoBlocks = 300'001;  // more than a copy by hand moves at once
  const std::string folder = source_folder(which) + "/";
  write(folder + kSources[0], text_of(which));
  write(folder + kSources[1], some_bytes(which, kTwoBlocks));
  write_with_holes(folder + kSources[2], some_bytes(which, 5000));
  static_cast<void>(setxattr((folder + kSources[1]).c_str(), "user.origin", "here", 4, 0));
  Contents& contents = whole(which);
  for (const char* name : kSources) {
    chmod((folder + name).c_str(), 0640);
    set_past_time(folder + name);
    contents[name] = test::read_file(folder + name);
  }
  contents[kData] = is_first(which) ? "first" : "next!";
  write_folder(shared_folder(which), which);
}

void Scene::write_surroundings() const {
  const std::vector<std::string> files{bus_.path("beside/letter.txt"),
                                       bus_.path("beside/deep/er/notes.txt"),
                                       shared_data() + "/Accounts.plist",
                                       shared_data() + "/Contacts/Groups.plist",
                                       container() + "/SharedDataBeta/Share/letter.txt",
                                       container() + "/own.txt"};
  for (const std::string& file : files) {
    write(file, "what stood in " + file);
    set_past_time(file);
  }
  fs::create_symlink("letter.txt", bus_.path("beside/link"));
  chmod(container().c_str(), 0700);
}

std::vector<std::string> Scene::command(Which which) const {
  std::vector<std::string> command{QUOLL_SHARE, "--title", "A title", "--text", text_of(which)};
  for (const char* name : kSources) {
    command.push_back(source_folder(which) + "/" + name);
  }
  command.push_back(shared_folder(which));
  command.insert(command.end(), {image_of(which), data_of(which), link_of(which)});
  return command;
}

Staged Scene::learn() {
  for (const Which which : {Which::kFirst, Which::kNext}) {
    Freely freely;
    prepare(true);
    const SteppedEnd end = run_stepped(command(which), environment(), freely, 0);
    if (end.status != 0) {
      throw std::runtime_error("an unharmed share ends with " + std::to_string(end.status) + ": " +
                               end.errors);
    }
    for (const char* name : {kImage, kZip}) {
      whole(which)[name] = test::read_file(staging() + "/" + name);
    }
    const auto unpacked = missing_of_zip(staging() + "/" + kZip, shared_folder(which));
    if (!unpacked || !unpacked->empty()) {
      throw std::runtime_error("an unharmed share does not pack all of a folder");
    }
    const auto result = draft(which);
    if (!result || !result->missing.empty() || !result->broken.empty()) {
      throw std::runtime_error("an unharmed share does not deliver all of it");
    }
  }
  for (const char* name : {kImage, kZip}) {
    if (staged_.first[name] == staged_.next[name]) {
      throw std::runtime_error(std::string("both selections have the same ") + name);
    }
  }
  return staged_;
}

void Scene::prepare(bool anew) {
  fs::remove(bus_.path("record"));
  fs::remove_all(temporary());
  fs::create_directories(temporary());
  if (anew) {
    for (const std::string& folder : {staging(), locks(), incoming()}) {
      fs::remove_all(folder);
    }
  }
}

std::optional<Draft> Scene::draft(Which which) const {
  const std::string url = opened_url(bus_.path("record"));
  if (url.empty()) {
    return std::nullopt;
  }
  Draft draft;
  const auto message =
      ExtensionMessage::ExtensionMessageWithUrl(foundation::NSURL::URLWithString(url));
  std::set<std::string> found;
  for (const auto& attachment : message->attachments()) {
    const std::string path = attachment.description();
    const std::string name = fs::path(path).filename();
    const auto lacks = lacking(which, path);
    if (fs::path(path).parent_path() != staging() || !lacks) {
      draft.broken.push_back(path);
    } else {
      found.insert(without_number(name));
      draft.missing.insert(lacks->begin(), lacks->end());
    }
  }
  const std::string body = message->htmlBody().description();
  const auto miss = [&](bool is_there, const std::string& given) {
    if (!is_there) {
      draft.missing.insert(named(given));
    }
  };
  for (const char* name : kSources) {
    miss(found.contains(name), source_folder(which) + "/" + name);
  }
  miss(found.contains(kZip), shared_folder(which));
  miss(found.contains(kImage), image_of(which));
  miss(found.contains(kData), data_of(which));
  miss(body.find("<a href=\"" + link_of(which) + "\"") != std::string::npos, link_of(which));
  miss(body.find(text_of(which)) != std::string::npos, "the text");
  return draft;
}

std::optional<std::set<std::string>> Scene::lacking(Which which, const std::string& path) const {
  const std::string name = without_number(fs::path(path).filename());
  const auto expected = whole(which).find(name);
  if (expected == whole(which).end() || !fs::is_regular_file(path)) {
    return std::nullopt;
  }
  if (test::read_file(path) == expected->second) {
    return std::set<std::string>();
  }
  return name == kZip ? missing_of_zip(path, shared_folder(which)) : std::nullopt;
}

bool Scene::is_whole(const std::string& path) const {
  const std::string name = without_number(fs::path(path).filename());
  const std::string bytes = test::read_file(path);
  const auto is_staged = [&](Which which) {
    const auto expected = whole(which).find(name);
    return expected != whole(which).end() && expected->second == bytes;
  };
  return is_staged(Which::kFirst) || is_staged(Which::kNext) || lacking(Which::kFirst, path) ||
         lacking(Which::kNext, path);
}

bool Scene::is_picked_file(const std::string& name) {
  return std::ranges::any_of(kSources, [&](const char* picked) { return name == picked; });
}

std::vector<std::string> Scene::staged_names() const {
  std::vector<std::string> names;
  for (const auto& [name, bytes] : staged_.first) {
    names.push_back(name);
  }
  return names;
}

Snapshot Scene::untouchable() const {
  return snapshot({source_folder(Which::kFirst), source_folder(Which::kNext), bus_.path("beside"),
                   bus_.path("home"), container()},
                  {staging(), locks(), incoming()});
}

}  // namespace quoll::crash

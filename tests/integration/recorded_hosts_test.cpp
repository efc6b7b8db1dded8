// What real programs handed over when all files of a folder were shared from their menus, as
// tests/hosts/drive --record notes it, played again: from the bytes to the attachments.
#include <map>

#include "tests/integration/share_menu.h"

namespace quoll::test {
namespace {

const std::string kRecordedRoot = "/tmp/recorded/";

std::vector<Json> recorded_hosts() {
  std::ifstream file(QUOLL_RECORDED_HOSTS);
  std::vector<Json> hosts;
  for (std::string line; std::getline(file, line);) {
    hosts.push_back(Json::parse(line));
  }
  return hosts;
}

std::string bytes_of(const std::string& hex) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < hex.size(); at += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(at, 2), nullptr, 16));
  }
  return bytes;
}

/// The map that a menu sent behind the line with its length, which has to be right.
std::string map_of(const Json& host) {
  const std::string bytes = bytes_of(host.at("request"));
  const auto line_end = bytes.find('\n');
  EXPECT_EQ(bytes.substr(0, line_end), std::to_string(bytes.size() - line_end - 1));
  return bytes.substr(line_end + 1);
}

std::string content_of(const std::filesystem::path& path) {
  return "the content of " + path.filename().string();
}

/// The names of a message's attachments with their bytes.
std::map<std::string, std::string> attachments_in(const std::string& read_message) {
  std::istringstream lines(read_message);
  std::map<std::string, std::string> found;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("attachment ")) {
      const auto name = line.find('"');
      const auto hex = line.rfind(' ');
      found[Json::parse(line.substr(name, hex - name))] = bytes_of(line.substr(hex + 1));
    }
  }
  return found;
}

class RecordedHost : public ShareMenu, public testing::WithParamInterface<Json> {
 protected:
  RecordedHost() {
    install_receiver();
    for (const std::string file : host_["files"]) {
      const std::filesystem::path path(root_ + file);
      std::filesystem::create_directories(path.parent_path());
      std::ofstream(path) << content_of(path);
      std::filesystem::permissions(path,
                                   std::filesystem::perms::owner_read);  // Spectacle's have it
      wanted_[path.filename()] = content_of(path);
    }
  }

  /// What was recorded, with the folder of this test in the place of the recording's.
  [[nodiscard]] Json here(const Json& recorded) const {
    std::string text = recorded.dump();
    for (auto at = text.find(kRecordedRoot); at != std::string::npos;
         at = text.find(kRecordedRoot, at + root_.size())) {
      text.replace(at, kRecordedRoot.size(), root_);
    }
    return Json::parse(text);
  }
  void play_arguments() const {
    std::vector<std::string> command{QUOLL_SHARE};
    for (const std::string argument : here(host_["arguments"])) {
      command.push_back(argument);
    }
    const Ended ended = run(command, bus_.environment());
    EXPECT_EQ(ended.status, 0) << ended.errors;
  }
  void play_request() {
    const std::string sent = map_of(host_);
    const Json map = Json::from_cbor(sent);
    const auto again = Json::to_cbor(map);
    EXPECT_EQ(std::string(again.begin(), again.end()), sent);  // only the folder will be another
    choose();
    request(here(map));
    EXPECT_EQ(last_word(), kEnd);
    EXPECT_EQ(entry_->wait(), 0) << entry_->errors();
  }
  /// What an independent reader finds in the only draft.
  [[nodiscard]] std::string read_draft() const {
    const auto files = draft_files();
    EXPECT_EQ(files.size(), 1U);
    return files.empty() ? "" : run({"python3", READ_MESSAGE, files[0]}).output;
  }

  const Json& host_ = GetParam();
  const std::string root_ = bus_.path("files/");
  std::map<std::string, std::string> wanted_;
};

TEST_P(RecordedHost, EveryFileArrivesWhole) {
  if (host_.contains("request")) {
    play_request();
  } else {
    play_arguments();
  }
  const std::string draft = read_draft();
  EXPECT_EQ(attachments_in(draft), wanted_);
  for (const std::string words : host_.value("says", Json::array())) {
    EXPECT_NE(draft.find(words), std::string::npos) << words << " in " << draft;
  }
}

INSTANTIATE_TEST_SUITE_P(All, RecordedHost, testing::ValuesIn(recorded_hosts()),
                         [](const auto& row) {
                           auto name = row.param.at("host").template get<std::string>();
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
}  // namespace quoll::test

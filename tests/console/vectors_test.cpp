#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "apps/console/operations/session.h"
#include "quoll/linux/icu/date_formatter.h"
#include "quoll/linux/image_helper/images.h"
#include "quoll/linux/links/links.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/steady_clock.h"
#include "quoll/linux/xml/styled_text.h"
#include "quoll/records/extension_date.h"
#include "tests/console/short_dates.h"
#include "tests/console/vector_case.h"
#include "tests/support/recorders.h"

namespace quoll::test {

namespace {

using console::Json;

constexpr const char* kIdentifier = "QUOLL_BUNDLE_IDENTIFIER";
constexpr const char* kContainers = "QUOLL_GROUP_CONTAINERS";

std::vector<std::string> split_lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// The variables of a run, over those that this process has.
std::map<std::string, std::string> variables(const VectorCase& vector,
                                             const VectorFolders& folders) {
  std::map<std::string, std::string> all{{"QUOLL_WORKSPACE", "record"},
                                         {kContainers, folders.containers()},
                                         {kIdentifier, "it.vorlent.quoll2.Quoll-Share"},
                                         {"LC_ALL", "en_US.UTF-8"},
                                         {"LC_TIME", ""},
                                         {"LANG", ""},
                                         {"LANGUAGE", ""},
                                         {"TZ", "UTC"}};
  for (const auto& [name, value] : vector.environment) {
    all[name] = folders.fill(value);
  }
  return all;
}

/// Answers in this process, with the bundle of its own that a run's environment asks for.
std::vector<std::string> answer_here(const std::vector<std::string>& lines,
                                     const std::map<std::string, std::string>& environment) {
  for (const char* name : {kContainers, "LC_ALL", "LC_TIME", "LANG", "TZ"}) {
    setenv(name, environment.at(name).c_str(), 1);
  }
  const std::string& identifier = environment.at(kIdentifier);
  const auto queue = std::make_shared<ThreadQueue>();
  console::Session session({.bundle = std::make_shared<FixedBundle>(
                                identifier.empty() ? std::nullopt : std::optional(identifier)),
                            .files = posix::make_file_manager(),
                            .coordinator = posix::coordinator_factory(),
                            .workspace = std::make_shared<RecordingWorkspace>(),
                            .notifications = nullptr,
                            .log = nullptr,
                            .queue = queue,
                            .clock = posix::make_clock(),
                            .images = image_helper::make_images(image_helper::helper_path()),
                            .styled_text = xml::make_styled_text(true),
                            .dates = icu::make_dates(),
                            .links = links::make_links()});
  // Its formatters are those of the run before; the program makes its own.
  ExtensionDate::shared()->Initialize();
  std::vector<std::string> replies;
  for (const std::string& line : lines) {
    replies.push_back(session.reply(line));
  }
  queue->wait();
  return replies;
}

/// Answers by the program.
std::vector<std::string> answer_there(const std::vector<std::string>& lines,
                                      const std::map<std::string, std::string>& environment,
                                      int& status) {
  const TemporaryFolder folder;
  std::string requests;
  for (const std::string& line : lines) {
    requests += line + "\n";
  }
  const std::string in = folder.write("requests", requests);
  const std::string out = folder.path("replies");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT, 0600);
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (!environment.contains(text.substr(0, text.find('=')))) {
      variables.push_back(text);
    }
  }
  for (const auto& [name, value] : environment) {
    variables.push_back(name + "=" + value);
  }
  std::vector<char*> pointers;
  for (std::string& variable : variables) {
    pointers.push_back(variable.data());
  }
  pointers.push_back(nullptr);
  std::string program = QUOLLCTL;
  std::string command = "call";
  char* arguments[] = {program.data(), command.data(), nullptr};
  pid_t child = 0;
  const int failure = posix_spawn(&child, QUOLLCTL, &actions, nullptr, arguments, pointers.data());
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0 || waitpid(child, &status, 0) != child) {
    throw std::runtime_error("the program cannot be run");
  }
  return split_lines(read_file(out));
}

Json without_time(const std::string& reply) {
  Json json = console::parse_json(reply);
  json.erase("seconds");
  return json;
}

/// Runs vectors that share one pair of folders, here and there, and compares.
void run(const std::vector<VectorCase>& vectors) {
  const VectorFolders folders;
  const auto environment = variables(vectors.front(), folders);
  std::vector<std::string> lines;
  std::vector<std::size_t> last_line;  // of each vector
  for (const VectorCase& vector : vectors) {
    for (std::string& line : request_lines(vector, folders)) {
      lines.push_back(std::move(line));
    }
    last_line.push_back(lines.size() - 1);
  }
  folders.make_files(vectors.front());
  const auto here = answer_here(lines, environment);
  folders.clear();
  folders.make_files(vectors.front());
  int status = -1;
  const auto there = answer_there(lines, environment, status);
  ASSERT_EQ(there.size(), lines.size()) << vectors.front().reason;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(console::json_line(without_time(here[i])), console::json_line(without_time(there[i])))
        << lines[i];
  }
  for (std::size_t i = 0; i < vectors.size(); ++i) {
    const Json reply = reply_of_this_system(vectors[i], environment);
    const Json expected = console::parse_json(folders.fill(console::json_line(reply)));
    EXPECT_TRUE(matches(expected, console::parse_json(there[last_line[i]])))
        << "because: " << vectors[i].reason << "\nrequest:  " << lines[last_line[i]]
        << "\nexpected: " << console::json_line(expected) << "\nreply:    " << there[last_line[i]];
  }
  const bool all_answered = std::all_of(there.begin(), there.end(), [](const std::string& reply) {
    return console::parse_json(reply).contains("result");
  });
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), all_answered ? 0 : 1) << vectors.front().reason;
}

class Vectors : public testing::TestWithParam<std::string> {};

std::vector<std::string> vector_files() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(QUOLL_VECTORS)) {
    if (entry.path().extension() == ".jsonl") {
      names.push_back(entry.path().stem());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST_P(Vectors, AreAnsweredHereAndByTheProgram) {
  std::vector<VectorCase> together;
  for (const VectorCase& vector :
       read_vectors(std::string(QUOLL_VECTORS) + "/" + GetParam() + ".jsonl")) {
    if (vector.alone) {
      run({vector});
    } else {
      together.push_back(vector);
    }
  }
  if (!together.empty()) {
    run(together);
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Vectors, testing::ValuesIn(vector_files()),
                         [](const auto& file) { return file.param; });

}  // namespace

}  // namespace quoll::test

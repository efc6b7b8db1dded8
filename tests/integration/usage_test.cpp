// What the programs say of themselves, and of a wrong command line.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/integration/process.h"

namespace quoll::test {
namespace {

TEST(Usage, EveryProgramTellsItsVersion) {
  const std::vector<std::pair<const char*, std::string>> programs{
      {QUOLLCTL, "quollctl"},
      {QUOLL_SHARE, "quoll-share"},
      {QUOLL_SHARE_PURPOSE, "quoll-share-purpose"},
      {QUOLL_SHARE_SERVICE, "quoll-share-service"},
      {QUOLL_COMPOSE, "quoll-compose"},
      {QUOLL_IMAGE_HELPER, "quoll-image-helper"},
      {QUOLL_FOLDER_HELPER, "quoll-folder-helper"},
  };
  for (const auto& [program, name] : programs) {
    const Ended ended = run({program, "--version"});
    EXPECT_EQ(ended.status, 0) << name;
    EXPECT_EQ(ended.output, name + " " QUOLL_VERSION "\n");
    EXPECT_EQ(ended.errors, "") << name;
  }
}

TEST(Usage, AWrongCommandLineIsOneLine) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> rows{
      {{"nosuch"}, "there is no subcommand nosuch; see quollctl --help"},
      {{"nosuch", "--json"}, "there is no subcommand nosuch; see quollctl --help"},
      {{"a\nb"}, "there is no subcommand a\\nb; see quollctl --help"},
      {{}, "A subcommand is required; see quollctl --help"},
      {{"--nosuch"}, "there is no option --nosuch; see quollctl --help"},
      {{"show"}, "URL is required; see quollctl show --help"},
      {{"doctor", "--nosuch"}, "there is no option --nosuch; see quollctl doctor --help"},
      {{"doctor", "--nosuch=1", "--nosuch2"},
       "there is no option --nosuch; see quollctl doctor --help"},
      {{"doctor", "word", "--nosuch"}, "there is no option --nosuch; see quollctl doctor --help"},
      {{"doctor", "word"}, "word is not expected; see quollctl doctor --help"},
  };
  for (const auto& [arguments, told] : rows) {
    std::vector<std::string> command{QUOLLCTL};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Ended ended = run(command);
    EXPECT_EQ(ended.status, 2) << told;
    EXPECT_EQ(ended.errors, "quollctl: " + told + "\n");
    EXPECT_EQ(ended.output, "");
  }
}

TEST(Usage, TheOthersSayItInTheSameManner) {
  const std::vector<std::pair<const char*, std::string>> programs{
      {QUOLL_SHARE, "quoll-share"},
      {QUOLL_SHARE_SERVICE, "quoll-share-service"},
      {QUOLL_COMPOSE, "quoll-compose"},
  };
  for (const auto& [program, name] : programs) {
    const Ended ended = run({program, "--nosuch"});
    EXPECT_EQ(ended.status, 2) << name;
    EXPECT_EQ(ended.errors, name + ": there is no option --nosuch; see " + name + " --help\n");
  }
}

// A file of a stranger may be called so, and "quoll-share *" names it.
TEST(Usage, NoArgumentReachesTheTerminalAsItIs) {
  for (const char* const program : {QUOLL_SHARE, QUOLL_SHARE_SERVICE, QUOLL_COMPOSE, QUOLLCTL}) {
    for (const char* const argument : {"--foo\x1b[31m", "-\x1b]0;T\a", "--idle=\x1b[2J"}) {
      const Ended ended = run({program, argument});
      EXPECT_EQ(ended.status, 2) << program;
      EXPECT_EQ(ended.errors.find_first_of("\x1b\a"), std::string::npos) << ended.errors;
    }
  }
}

TEST(Usage, WhatAnOptionTakesIsSaid) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> rows{
      {{QUOLL_COMPOSE, "--service", "--idle", "86401"},
       "quoll-compose: --idle: it takes 0 to 86400 seconds; see quoll-compose --help"},
      {{QUOLL_COMPOSE, "--service", "--idle", "long"},
       "quoll-compose: --idle: it takes 0 to 86400 seconds; see quoll-compose --help"},
      {{QUOLL_SHARE_SERVICE, "--idle", "86401"},
       "quoll-share-service: --idle: it takes 0 to 86400 seconds; see quoll-share-service --help"},
      {{QUOLL_SHARE_SERVICE, "--time", "0"},
       "quoll-share-service: --time: it takes 1 to 86400 seconds; see quoll-share-service --help"},
      {{QUOLL_SHARE, "--title"}, "quoll-share: --title needs a TEXT; see quoll-share --help"},
      {{QUOLL_SHARE, "--text", "a", "--html", "b"},
       "quoll-share: give one of --text, --html; see quoll-share --help"},
      {{QUOLL_SHARE, "--print", "--json", "a"},
       "quoll-share: give one of --print, --json; see quoll-share --help"},
      {{QUOLLCTL, "sample-container", "/nowhere", "--form"},
       "quollctl: --form needs a FORM; see quollctl sample-container --help"},
      {{QUOLLCTL, "launch", "nosuch", "a.plist"},
       "quollctl: COMMAND: it takes archive, delete, reply, message, compose, send or open; "
       "see quollctl launch --help"},
      {{QUOLLCTL, "sample-container", "/nowhere", "--form", "zzz"},
       "quollctl: --form: it takes xml, binary or old; see quollctl sample-container --help"},
  };
  for (const auto& [command, told] : rows) {
    const Ended ended = run(command);
    EXPECT_EQ(ended.status, 2) << told;
    EXPECT_EQ(ended.errors, told + "\n");
    EXPECT_EQ(ended.output, "") << told;
  }
}

TEST(Usage, TheReceiverDoesOneThing) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> rows{
      {{}, "nothing to do"},
      {{"--list", "--show"}, "give one of --list, --show"},
      {{"--resume", "quoll://compose?"}, "give one of URL, --resume"},
      {{"--open", "x", "--client", "x"}, "give one of --open, --client"},
      {{"--again", "x", "--client", "x", "--list"}, "give one of --list, --again, --client"},
      {{"--open"}, "--open needs a NAME"},
      {{"--client"}, "--client needs a NAME"},
      {{"--service", "--idle"}, "--idle needs SECONDS"},
      {{"--resume", "--idle", "1"}, "--idle is for --service"},
      {{"--clients", "--json"}, "--json is for --list"},
  };
  for (const auto& [arguments, told] : rows) {
    std::vector<std::string> command{QUOLL_COMPOSE};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Ended ended = run(command);
    EXPECT_EQ(ended.status, 2) << told;
    EXPECT_EQ(ended.errors, "quoll-compose: " + told + "; see quoll-compose --help\n");
    EXPECT_EQ(ended.output, "") << told;
  }
  const std::string help = run({QUOLL_COMPOSE, "--help"}).output;
  for (const char* const word : {"Excludes", "Needs"}) {
    EXPECT_EQ(help.find(word), std::string::npos) << help;
  }
  EXPECT_NE(help.find("\n  quoll-compose --again "), std::string::npos) << help;
}

TEST(Usage, HelpHasExamples) {
  const Ended ended = run({QUOLLCTL, "--help"});
  EXPECT_EQ(ended.status, 0);
  EXPECT_NE(ended.output.find("Examples:\n    quollctl doctor "), std::string::npos)
      << ended.output;
  for (const std::string command : {"call", "show", "url", "accounts", "contacts", "date", "render",
                                    "launch", "doctor", "forget", "sample-container"}) {
    const std::string help = run({QUOLLCTL, command, "--help"}).output;
    const std::size_t example = help.find("Example:\n    ");
    EXPECT_NE(help.find("quollctl " + command, example), std::string::npos) << help;
  }
}

TEST(Usage, HelpHasNoRulesOfTheParser) {
  for (const char* program : {QUOLL_SHARE, QUOLLCTL}) {
    const std::string help = run({program, "--help"}).output;
    EXPECT_EQ(help.find("Excludes:"), std::string::npos) << help;
    EXPECT_EQ(help.find("Needs:"), std::string::npos) << help;
  }
}

}  // namespace
}  // namespace quoll::test

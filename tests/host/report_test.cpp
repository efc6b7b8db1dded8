#include "apps/share/report.h"

#include <gtest/gtest.h>

#include <sstream>

#include "apps/share/notice.h"
#include "quoll/foundation/format.h"
#include "quoll/platform/desktop.h"
#include "quoll/platform/type_identifiers.h"
#include "tests/support/recorders.h"

namespace quoll::share {
namespace {

using foundation::Error;
using foundation::file_error;
using foundation::format;
using foundation::NSURL;
using platform::LogEvent;
using recording::Event;

/// What is logged by `platform::log(pattern, error)`.
LogEvent event_of(foundation::Pattern<1> pattern, const Error& error) {
  return {format(pattern, error), error};
}

/// What a coordination that failed logs.
LogEvent not_coordinated(foundation::Pattern<1> pattern, const Error& error) {
  return {format(pattern, error), foundation::quoll_error(foundation::kNotCoordinatedError, error)};
}

/// What a step that prepares the staging folder logs.
LogEvent not_prepared(foundation::Pattern<1> pattern, const Error& error) {
  return {format(pattern, error), foundation::quoll_error(foundation::kNotPreparedError, error)};
}

/// An item for which the extension wrote this file, or logged this.
std::shared_ptr<SharedItem> file_item(const std::string& name, const std::string& staged,
                                      const std::optional<LogEvent>& event) {
  const auto queue = std::make_shared<test::HeldQueue>();
  const platform::ScopedDesktop desktop({.queue = queue});
  auto item = std::make_shared<SharedItem>(name, platform::kUTTypeFileURL,
                                           NSURL::file_url("/" + name, false));
  item->loadItemForTypeIdentifier(platform::kUTTypeURL, [&](const auto&, const auto&) {
    if (!staged.empty()) {
      recording::record(recording::WrittenFile{staged});
    }
    if (event) {
      recording::record(*event);
    }
  });
  queue->run();
  return item;
}

struct Told {
  ExitCode code;
  std::string text;
};

/// What is told of a share with these events, after which the URL was opened, or was not.
Told told(const Selection& selection, std::vector<Event> events, const char* url,
          bool answer = true) {
  if (url != nullptr) {
    events.push_back(recording::Opening{{NSURL::URLWithString(url)}, "x", {}});
    events.push_back(recording::OpeningAnswer{answer});
  }
  std::ostringstream out;
  const ShareResult result = result_of(selection, events);
  report(result, out);
  return {result.code(), out.str()};
}

TEST(Report, WhatTheDraftHoldsDecides) {
  struct Row {
    const char* reason;
    std::string staged;
    std::optional<LogEvent> event;
    const char* url;
    std::string text;
  };
  const LogEvent denied =
      event_of("Error writing file shareFiles %@", file_error(EACCES, "/a.pdf", true));
  const std::vector<Row> rows{
      {"it is in the draft",
       "/Share/a.pdf",
       {},
       "quoll://compose?attachment_0=%2FShare%2Fa.pdf",
       ""},
      {"it was staged a moment too late",
       "/Share/a.pdf",
       {},
       "quoll://compose?",
       "left out: a.pdf: it took too long\n"},
      {"another file of that name is in the draft",
       "/Share/a_1.pdf",
       {},
       "quoll://compose?attachment_0=%2FShare%2Fa.pdf",
       "left out: a.pdf: it took too long\n"},
      {"it could not be read", "", denied, "quoll://compose?",
       "left out: a.pdf: permission denied\n"},
      {"a line was logged and all went well", "/Share/a.pdf", LogEvent{"a note"},
       "quoll://compose?attachment_0=%2FShare%2Fa.pdf", ""},
      {"no folder to stage it in", "",
       not_coordinated("Error shareFiles %@", file_error(ENOENT, "/x", true)), "quoll://compose?",
       "left out: a.pdf: the shared folder cannot be used\n"},
  };
  for (const Row& row : rows) {
    Selection selection;
    selection.items = {file_item("a.pdf", row.staged, row.event)};
    const Told answer = told(selection, {}, row.url);
    EXPECT_EQ(answer.text, row.text) << row.reason;
    EXPECT_EQ(answer.code, row.text.empty() ? ExitCode::kOpened : ExitCode::kSomethingLeftOut)
        << row.reason;
  }
}

TEST(Report, Links) {
  Selection selection;
  for (const char* const link : {"https://in/", "https://out/"}) {
    selection.items.push_back(
        std::make_shared<SharedItem>(link, platform::kUTTypeURL, NSURL::URLWithString(link)));
  }
  const Told answer = told(
      selection, {},
      "quoll://"
      "compose?htmlBody=%3Ca%20href%3D%22https%3A%2F%2Fin%2F%22%3Ehttps%3A%2F%2Fin%2F%3C%2Fa%3E");
  EXPECT_EQ(answer.text, "left out: https://out/: it was not asked for\n");
}

TEST(Report, NotOpened) {
  Selection selection;
  selection.text = "x";
  EXPECT_EQ(told(selection, {}, "quoll://compose?", false).code, ExitCode::kNotOpened);
  EXPECT_EQ(told(selection, {LogEvent{"the share ended early: no memory"}}, nullptr).text,
            "not opened: the share ended early: no memory; quollctl doctor tells more\n");
}

TEST(Report, WhatTheLaunchLoggedIsKeptApart) {
  Selection selection;
  selection.text = "x";
  std::vector<Event> events{
      LogEvent{"the styled text cannot be written"},
      recording::Opening{{NSURL::URLWithString("quoll://compose?")}, "x", {}},
      LogEvent{"openURLs nobody is there",
               foundation::quoll_error(foundation::kNotOpenedError, "nobody is there")},
      recording::OpeningAnswer{false}};
  EXPECT_EQ(told(selection, events, nullptr).text,
            "not opened: nobody is there; quollctl doctor tells more\n");
  events.back() = recording::OpeningAnswer{true};
  EXPECT_EQ(told(selection, events, nullptr).text,
            "left out: the text: the styled text cannot be written\n");
  events.front() = LogEvent{"queue: no thread can be started", foundation::posix_error(EAGAIN)};
  EXPECT_EQ(told(selection, events, nullptr).text, "") << "that is not about the text";
}

TEST(Report, WordsOfOthersAreNoAdvice) {
  Selection selection;
  selection.text = "x";
  auto error = foundation::quoll_error(foundation::kNotOpenedError, "it says: no; not now");
  const auto text = [&] {
    return told(selection,
                {recording::Opening{{NSURL::URLWithString("quoll://compose?")}, "x", {}},
                 LogEvent{"openURLs", error}, recording::OpeningAnswer{false}},
                nullptr)
        .text;
  };
  EXPECT_EQ(text(), "not opened: it says: no; not now; quollctl doctor tells more\n");
  error.user_info.emplace_back("NSLocalizedRecoverySuggestion", "ask again");
  EXPECT_EQ(text(), "not opened: it says: no; not now; ask again\n");
}

TEST(Report, AShareThatEndedEarlySaysWhatToDo) {
  std::ostringstream out;
  report(failed_share("a; b"), out);
  EXPECT_EQ(out.str(), "not opened: a; b; quollctl doctor tells more\n");
}

TEST(Notice, IsOfSentencesWithoutCommands) {
  const auto body = [](const std::string& told) { return notice_of(1, told).body; };
  EXPECT_EQ(body("left out: a: gone\nnot opened: it did not answer; quollctl doctor tells more\n"),
            "Left out: a: gone\nIt did not answer");
  EXPECT_EQ(body(""), "It ended without a reason; try it once more.");
}

TEST(Report, NamesFromStrangersAreEscaped) {
  Selection selection;
  selection.text = "x";
  selection.left_out = {{"a\n\x1B[2J", "no such file"}};
  EXPECT_EQ(told(selection, {}, "quoll://compose?").text, "left out: a\\n\\x1B[2J: no such file\n");
}

TEST(Report, TroubleWithTheSharedFolderIsToldOnce) {
  struct Row {
    const char* reason;
    std::vector<Event> preparation;
    const char* begin;
  };
  const auto missing = file_error(ENOENT, "/Share", true);
  const auto read_only = file_error(EROFS, "/Share", true);
  const std::vector<Row> rows{
      {"the very first share",
       {not_prepared("shareInit delete %@", missing), not_prepared("shareInit create %@", missing)},
       ""},
      {"a read-only container",
       {not_prepared("shareInit delete %@", read_only),
        not_prepared("shareInit create %@", read_only)},
       "the shared folder cannot be used: read-only file system; "},
      {"no container",
       {not_coordinated("shareInit %@", missing)},
       "the shared folder cannot be used: there is none; "},
      {"the lock cannot be had",
       {not_coordinated("shareInit %@", read_only)},
       "the shared folder cannot be used: read-only file system; "},
  };
  for (const Row& row : rows) {
    Selection selection;
    selection.text = "x";
    const Told answer = told(selection, row.preparation, "quoll://compose?");
    EXPECT_TRUE(answer.text.starts_with(row.begin)) << row.reason << ": " << answer.text;
    EXPECT_EQ(std::count(answer.text.begin(), answer.text.end(), '\n'), *row.begin == 0 ? 0 : 1)
        << row.reason;
    EXPECT_EQ(answer.code, ExitCode::kOpened) << row.reason;
  }
}

TEST(Report, TheLogNamesTroubleWithTheSharedFolderOnce) {
  ShareResult result;
  result.is_opened = true;
  result.application = "x";
  result.folder_trouble = "the shared folder cannot be used: there is none";
  constexpr std::chrono::milliseconds kTime{1};
  EXPECT_EQ(log_line(result, kTime),
            "share given to x after 1 ms: nothing; the shared folder cannot be used");
  result.left_out = {{"a.pdf", "the shared folder cannot be used"}};
  EXPECT_EQ(log_line(result, kTime),
            "share given to x after 1 ms: nothing; left out: 1: the shared folder cannot be used");
}

TEST(Report, AFolderThatCouldNotBeEmptiedAndWasFilledIsNoTrouble) {
  const auto bad_disk = file_error(EIO, "/Share", true);
  Selection selection;
  selection.items = {file_item("a.pdf", "/Share/a_1.pdf", {})};
  const Told answer = told(selection,
                           {not_prepared("shareInit delete %@", bad_disk),
                            not_prepared("shareInit create %@", bad_disk)},
                           "quoll://compose?attachment_0=%2FShare%2Fa_1.pdf");
  EXPECT_EQ(answer.text, "");
  EXPECT_EQ(answer.code, ExitCode::kOpened);
}

TEST(ShownReport, HasWholeLinesOfText) {
  constexpr std::size_t kMost = 8;
  EXPECT_EQ(shown_report("", kMost), "");
  EXPECT_EQ(shown_report("one\ntwo\n", kMost), "one\ntwo");
  EXPECT_EQ(shown_report("no; quollctl doctor tells more\nb\n", 100), "no\nb")
      << "no terminal there";
  EXPECT_EQ(shown_report("one\ntwo\nthree\n", kMost), "one\ntwo\n...");
  EXPECT_EQ(shown_report("a long line", kMost), "a long l\n...");
  EXPECT_EQ(shown_report("a line \xC3\xBC", kMost), "a line \n...") << "no half character";
  EXPECT_EQ(shown_report("gr\xFC\xDF", kMost), std::nullopt);
  EXPECT_EQ(shown_report(std::string_view("a\0b", 3), kMost), std::nullopt);
}

}  // namespace
}  // namespace quoll::share

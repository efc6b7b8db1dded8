#include "apps/share/request/selection.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "apps/share/received_picture.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/platform/type_identifiers.h"
#include "tests/support/temporary_folder.h"

namespace quoll::share {
namespace {

/// A descriptor that delivers these bytes, then ends.
posix::UniqueFd delivering(std::string_view bytes) {
  std::FILE* const file = std::tmpfile();
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fflush(file);
  const int descriptor = dup(fileno(file));
  std::fclose(file);
  lseek(descriptor, 0, SEEK_SET);
  return posix::UniqueFd(descriptor);
}

/// The group container of the shares.
std::string container() {
  static const test::TemporaryFolder folder;
  return folder.path();
}

Selection select_items(std::vector<std::string> items, std::string_view standard_input = "") {
  const posix::UniqueFd input = delivering(standard_input);
  return make_selection({{}, {}, {}, std::move(items)}, container(), input.get());
}

std::optional<std::string> path_of(const SharedItem& item) {
  return foundation::file_system_path(item.value().as<foundation::NSURL>());
}

constexpr const char* kGif = "GIF89a\1\0\1\0\0\0\0";

TEST(Selection, EachKindHasItsType) {
  const test::TemporaryFolder folder;
  const std::string picture = folder.write("picture.gif", kGif);
  const posix::UniqueFd input = delivering(kGif);
  const Selection selection = make_selection(
      {{},
       {},
       {},
       {picture, "https://example.org/", "data:image/gif;base64,R0lGODlhAQABAAAAACw=", "-"}},
      folder.path(), input.get());
  ASSERT_EQ(selection.items.size(), 4U);
  EXPECT_TRUE(selection.left_out.empty());
  EXPECT_EQ(selection.items[0]->type(), platform::kUTTypeFileURL) << "an image by path is a file";
  EXPECT_EQ(path_of(*selection.items[0]), picture);
  EXPECT_EQ(selection.items[1]->type(), platform::kUTTypeURL);
  EXPECT_EQ(path_of(*selection.items[1]), std::nullopt);
  EXPECT_EQ(selection.items[2]->type(), platform::kUTTypeImage);
  EXPECT_TRUE(selection.items[2]->value().as<ReceivedPicture>());
  EXPECT_EQ(selection.items[3]->type(), platform::kUTTypeImage);
  const auto received = selection.items[3]->value().as<ReceivedPicture>();
  ASSERT_TRUE(received);
  struct stat status {};
  EXPECT_EQ(fstat(received->file(), &status), 0);
  EXPECT_EQ(static_cast<std::size_t>(status.st_size), std::string_view(kGif).size());
  EXPECT_FALSE(std::filesystem::exists(folder.path(".incoming"))) << "nothing needed a file";
}

TEST(Selection, BytesBecomeFilesInTheContainer) {
  struct Row {
    const char* reason;
    std::string item;
    std::string input;
    std::string name;
    std::string content;
  };
  const std::string large(5'000'000, 'a');
  const std::vector<Row> rows{
      {"text", "-", "hello", "/standard-input.txt", "hello"},
      {"more than one block", "-", large, "/standard-input.txt", large},
      {"not UTF-8", "-", "\xFF\xFE\xFD", "/standard-input", "\xFF\xFE\xFD"},
      {"a document", "-", "%PDF-1.7", "/standard-input.pdf", "%PDF-1.7"},
      {"a data: URL with text", "data:,hello", "", "/data.txt", "hello"},
      {"one of a type without an ending", "data:a/b,x", "", "/data", "x"},
      {"an image that no reader takes", "data:image/svg+xml,<svg/>", "", "/data.svg", "<svg/>"},
  };
  for (const Row& row : rows) {
    const Selection selection = select_items({row.item}, row.input);
    ASSERT_EQ(selection.items.size(), 1U) << row.reason;
    EXPECT_EQ(selection.items[0]->type(), platform::kUTTypeFileURL) << row.reason;
    const std::string path = path_of(*selection.items[0]).value_or("");
    EXPECT_TRUE(path.ends_with(row.name)) << row.reason << ": " << path;
    EXPECT_TRUE(path.starts_with(container() + "/.incoming/")) << row.reason << ": " << path;
    EXPECT_EQ(test::read_file(path), row.content) << row.reason;
  }
}

TEST(Selection, WithoutAContainerBytesAreLeftOut) {
  const Selection selection = make_selection(
      {{}, {}, {}, {"data:,hello", "https://h/", "data:image/gif,GIF89a"}}, std::nullopt);
  EXPECT_EQ(selection.items.size(), 2U) << "a link and an image need no file";
  ASSERT_EQ(selection.left_out.size(), 1U);
  EXPECT_EQ(selection.left_out[0].what, "data:,hello");
  EXPECT_EQ(selection.left_out[0].why,
            "it cannot be kept in a temporary file: there is no shared folder");
}

TEST(Selection, WhatCannotBeSharedKeepsNothingBack) {
  const test::TemporaryFolder folder;
  const std::string file = folder.write("a.txt", "x");
  const Selection selection =
      select_items({"/no/such/file", file, "-", "data:broken", "example.org"}, "");
  ASSERT_EQ(selection.items.size(), 1U);
  EXPECT_EQ(selection.items[0]->given(), file);
  ASSERT_EQ(selection.left_out.size(), 4U);
  EXPECT_EQ(selection.left_out[0].what, "/no/such/file");
  EXPECT_EQ(selection.left_out[0].why, "no such file");
  EXPECT_EQ(selection.left_out[1].what, "standard input");
  EXPECT_EQ(selection.left_out[1].why, "it is empty");
  EXPECT_EQ(selection.left_out[2].why, "the data: URL is damaged");
  EXPECT_EQ(selection.left_out[3].why, "no such file; for a link write https://example.org");
  EXPECT_EQ(selection.left_out[3].logged_as, "no such file");
}

TEST(Selection, StandardInputThatCannotBeRead) {
  const posix::UniqueFd closed(open("/dev/null", O_WRONLY));
  const Selection selection = make_selection({{}, {}, {}, {"-"}}, container(), closed.get());
  EXPECT_TRUE(selection.empty());
  ASSERT_EQ(selection.left_out.size(), 1U);
  EXPECT_EQ(selection.left_out[0].why, "bad file descriptor");
}

TEST(Selection, Texts) {
  const posix::UniqueFd input = delivering("from afar");
  const Selection selection = make_selection({"A title", "-", {}, {}}, container(), input.get());
  EXPECT_EQ(selection.title, "A title");
  EXPECT_EQ(selection.text, "from afar");
  EXPECT_FALSE(selection.empty());
  const Selection title_only = make_selection({"A title", {}, {}, {}}, container(), input.get());
  EXPECT_TRUE(title_only.empty()) << "a title alone is no share";
}

TEST(Selection, ATextThatOnlyRepeatsALinkIsDropped) {
  struct Row {
    const char* reason;
    std::string title;
    std::string text;
    std::string item;
    bool is_kept;
  };
  const test::TemporaryFolder folder;
  const std::string file = folder.write("a.txt", "x");
  const std::vector<Row> rows{
      {"the title once more", "A page", " A page\n", "https://h/", false},
      {"the link once more", "A page", "https://h/", "https://h/", false},
      {"something of its own", "A page", "A page, read it", "https://h/", true},
      {"another link", "A page", "https://h/other", "https://h/", true},
      {"a file does not show the title", "A page", "A page", file, true},
      {"a file's own name is no link", "A page", file, file, true},
  };
  for (const Row& row : rows) {
    ShareRequest request{row.title, row.text, {}, {row.item}};
    request.is_from_menu = true;
    const Selection selection = make_selection(std::move(request), container());
    EXPECT_EQ(selection.text.has_value(), row.is_kept) << row.reason;
    EXPECT_EQ(selection.title, row.title) << row.reason;
    EXPECT_TRUE(selection.left_out.empty()) << row.reason;
    const Selection typed = make_selection({row.title, row.text, {}, {row.item}}, container());
    EXPECT_TRUE(typed.text.has_value()) << row.reason << ": what somebody typed is kept";
  }
}

TEST(Selection, TheSubjectIsTheTitleUnlessThereIsAnother) {
  struct Row {
    const char* reason;
    std::optional<std::string> title;
    std::optional<std::string> subject;
    std::optional<std::string> expected;
    bool is_title_left_out;
  };
  const std::vector<Row> rows{
      {"neither", {}, {}, {}, false},           {"a title alone", "T", {}, "T", false},
      {"a subject alone", {}, "S", "S", false}, {"two that differ", "T", "S", "S", true},
      {"the same twice", "T", "T", "T", false},
  };
  for (const Row& row : rows) {
    ShareRequest request{row.title, {}, {}, {"https://h/"}};
    request.envelope.subject = row.subject;
    const Selection selection = make_selection(std::move(request), container());
    EXPECT_EQ(selection.envelope.subject, row.expected) << row.reason;
    EXPECT_EQ(selection.title, row.expected) << row.reason << ": a link brings it along";
    ASSERT_EQ(selection.left_out.size(), row.is_title_left_out ? 1U : 0U) << row.reason;
    if (row.is_title_left_out) {
      EXPECT_EQ(selection.left_out[0].what, "the title");
      EXPECT_EQ(selection.left_out[0].why, "the draft has another subject");
    }
  }
}

TEST(Selection, RecipientsThatCannotBeCarriedAreNamed) {
  using namespace std::string_view_literals;
  ShareRequest request;
  request.has_list = true;
  request.title = "-";
  request.envelope.subject = "-";
  request.text = "-";
  request.envelope.to = {"-", "-", "-", "-"};
  request.envelope.cc = {"c@x", "-"};
  const auto list = delivering("T\0T\0words\0a@x\0a@x;b@x\0a@x\nBcc: b@x\0\0-\0https://h/\0"sv);
  const Selection selection = make_selection(std::move(request), container(), list.get());
  EXPECT_EQ(selection.envelope.to, std::vector<std::string>{"a@x"});
  EXPECT_EQ(selection.envelope.cc, (std::vector<std::string>{"c@x", "-"}));
  EXPECT_EQ(selection.items.size(), 1U);
  std::string told;
  for (const LeftOut& left : selection.left_out) {
    told += left.what + ": " + left.why + "\n";
  }
  EXPECT_EQ(told,
            "the recipient a@x;b@x: it has a semicolon; give each address by itself\n"
            "the recipient a@x\\nBcc: b@x: it has a line break or a control character\n"
            "the recipient : it is empty\n");
}

TEST(Selection, WhatARecipientMayBe) {
  for (const char* const address : {"a@x", "A B <a@x>", "root", "\"A, B\" <a@x>", "gr\xC3\xBC@x",
                                    "'it''s' <a@x>", "a&b=c#d@x"}) {
    EXPECT_EQ(why_no_recipient(address), "") << address;
  }
  for (const char* const address : {"", " ", "a;b", "a\rb", "a\tb", "a\x7F", "a\xC2\x85",
                                    "a\xE2\x80\xA8", "a\xE2\x80\xAE", "a\xFF"}) {
    EXPECT_NE(why_no_recipient(address), "") << address;
  }
}

Selection select_descriptor(posix::UniqueFd from, std::string media_type, std::string name) {
  ShareRequest request;
  request.descriptor_items.push_back({std::move(from), std::move(media_type), std::move(name)});
  request.read_timeout = std::chrono::milliseconds(20);
  return make_selection(std::move(request), container());
}

TEST(Selection, DescriptorsBecomeFilesOfTheirNames) {
  struct Row {
    const char* reason;
    std::string media_type;
    std::string name;
    std::string file;
  };
  const std::vector<Row> rows{
      {"a name", "application/pdf", "a b,c.pdf", "a b,c.pdf"},
      {"one without an extension", "application/pdf", "report", "report.pdf"},
      {"no room for one", "text/plain", std::string(252, 'n'), std::string(252, 'n')},
      {"just room", "text/plain", std::string(251, 'n'), std::string(251, 'n') + ".txt"},
      {"an unknown type", "x/y", "report", "report"},
      {"no type", "", "report", "report.txt"},
      {"folders before it", "", "/etc/../x.txt", "x.txt"},
      {"folders above", "", "../..", "item.txt"},
      {"none", "text/html", "", "item.html"},
      {"a folder", "", "a/", "item.txt"},
      {"not UTF-8", "", "\xFF.txt", "\xFF.txt"},
      {"an option", "", "--x.txt", "--x.txt"},
  };
  for (const Row& row : rows) {
    const Selection selection = select_descriptor(delivering("hello"), row.media_type, row.name);
    ASSERT_EQ(selection.items.size(), 1U) << row.reason;
    const std::string path = path_of(*selection.items[0]).value_or("");
    EXPECT_TRUE(path.ends_with("/1/" + row.file)) << row.reason << ": " << path;
    EXPECT_EQ(test::read_file(path), "hello") << row.reason;
  }
}

TEST(Selection, AnImageThatIsDeliveredKeepsItsNameWhenItHasOne) {
  const Selection without = select_descriptor(delivering(kGif), "image/gif", "");
  ASSERT_EQ(without.items.size(), 1U);
  EXPECT_EQ(without.items[0]->type(), platform::kUTTypeImage);
  const Selection with = select_descriptor(delivering(kGif), "image/gif", "cat.gif");
  ASSERT_EQ(with.items.size(), 1U);
  EXPECT_EQ(with.items[0]->type(), platform::kUTTypeFileURL);
}

TEST(Selection, AFileIsDeliveredFromItsBeginning) {
  posix::UniqueFd file = delivering("hello");
  lseek(file.get(), 0, SEEK_END);
  const Selection selection = select_descriptor(std::move(file), "", "a.txt");
  ASSERT_EQ(selection.items.size(), 1U);
  EXPECT_EQ(test::read_file(path_of(*selection.items[0]).value_or("")), "hello");
}

TEST(Selection, DescriptorsThatDeliverNothing) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const posix::UniqueFd writing(ends[1]);
  int bounded[2] = {-1, -1};
  ASSERT_EQ(pipe2(bounded, O_CLOEXEC | O_NONBLOCK), 0);
  const posix::UniqueFd begun(bounded[1]);
  ASSERT_TRUE(posix::write_all(begun.get(), "the beginning, and no end"));
  struct Row {
    const char* reason;
    posix::UniqueFd from;
    std::string name;
    std::string why;
  };
  std::vector<Row> rows;
  rows.push_back({"silent", posix::UniqueFd(ends[0]), "a", "nothing came for too long"});
  rows.push_back({"half", posix::UniqueFd(bounded[0]), "a", "nothing came for too long"});
  rows.push_back({"folder", posix::UniqueFd(open("/", O_RDONLY)), "a", "is a directory"});
  rows.push_back({"no rights", posix::UniqueFd(open("/etc", O_PATH)), "a", "bad file descriptor"});
  rows.push_back(
      {"to write", posix::UniqueFd(open("/dev/null", O_WRONLY)), "a", "bad file descriptor"});
  rows.push_back({"empty", posix::UniqueFd(open("/dev/null", O_RDONLY)), "a", "it is empty"});
  rows.push_back({"long name", delivering("x"), std::string(256, 'n'),
                  "it cannot be kept in a temporary file: file name too long"});
  for (Row& row : rows) {
    const Selection selection = select_descriptor(std::move(row.from), "", row.name);
    EXPECT_TRUE(selection.empty()) << row.reason;
    ASSERT_EQ(selection.left_out.size(), 1U) << row.reason;
    EXPECT_EQ(selection.left_out[0].what, row.name) << row.reason;
    EXPECT_EQ(selection.left_out[0].why, row.why) << row.reason;
  }
}

TEST(Selection, AListOnStandardInput) {
  const test::TemporaryFolder folder;
  const std::string awkward = folder.write("a\nb \xFF,'%20", "x");
  const std::string given = folder.write("given.txt", "x");
  struct Row {
    const char* reason;
    std::string list;
    std::vector<std::string> items;
    std::vector<std::string> left_out;
  };
  const std::string zero(1, '\0');
  const std::vector<Row> rows{
      {"any bytes but zero",
       awkward + zero + "https://h/" + zero,
       {given, awkward, "https://h/"},
       {}},
      {"the last end is missing", awkward, {given, awkward}, {}},
      {"an empty part", zero + "https://h/" + zero, {given, "https://h/"}, {"the name is empty"}},
      {"no part", "", {given}, {"it is empty"}},
      {"standard input is the list itself", "-" + zero, {given}, {"no such file"}},
  };
  for (const Row& row : rows) {
    const posix::UniqueFd input = delivering(row.list);
    ShareRequest request;
    request.items = {given};
    request.has_list = true;
    const Selection selection = make_selection(std::move(request), container(), input.get());
    std::vector<std::string> items;
    for (const auto& item : selection.items) {
      items.push_back(item->given());
    }
    std::vector<std::string> left_out;
    for (const LeftOut& left : selection.left_out) {
      left_out.push_back(left.why);
    }
    EXPECT_EQ(items, row.items) << row.reason;
    EXPECT_EQ(left_out, row.left_out) << row.reason;
  }
}

TEST(Selection, TheTextsStandFirstInAList) {
  using namespace std::string_view_literals;
  const auto select_from = [](std::string_view list) {
    ShareRequest request;
    request.title = "-";
    request.html = "-";
    request.has_list = true;
    return make_selection(std::move(request), container(), delivering(list).get());
  };
  const Selection selection = select_from("-\0<b>x</b>\0https://h/\0"sv);
  EXPECT_EQ(selection.title, "-") << "what is in a list is meant as it is";
  EXPECT_EQ(selection.html, "<b>x</b>");
  ASSERT_EQ(selection.items.size(), 1U);
  const Selection without = select_from("A title\0"sv);
  EXPECT_EQ(without.title, "A title");
  EXPECT_EQ(without.html, std::nullopt);
  ASSERT_EQ(without.left_out.size(), 1U);
  EXPECT_EQ(without.left_out[0].why, "standard input ends before it");
}

TEST(Selection, TextThatIsNotUtf8) {
  const Selection selection =
      make_selection({"\xFF", "gr\xFC\xDF", {}, {"https://h/"}}, container());
  EXPECT_EQ(selection.title, std::nullopt);
  EXPECT_EQ(selection.text, std::nullopt);
  EXPECT_EQ(selection.items.size(), 1U);
  ASSERT_EQ(selection.left_out.size(), 2U);
  EXPECT_EQ(selection.left_out[1].what, "the text");
  EXPECT_EQ(selection.left_out[1].why, "it is not UTF-8");
}

TEST(Selection, MoreFilesThanDescriptors) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const test::TemporaryFolder folder;
  const std::vector<std::string> items(5000, folder.write("a.txt", "x"));
  const rlimit few{64, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  const Selection selection = select_items(items);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(selection.items.size(), items.size());
}

}  // namespace
}  // namespace quoll::share

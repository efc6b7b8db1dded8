// What each mail client's program is started with.
#include "apps/compose/client_arguments.h"

#include <gtest/gtest.h>

namespace quoll::compose {
namespace {

using gio::DraftWay;
using Words = std::vector<std::string>;

Words given(DraftWay way, const std::string& file) {
  return client_arguments(way, {}, {.text = {}, .attachments = {file}});
}

TEST(ClientArguments, AnyNameOfAFileArrivesAsThatFile) {
  struct Row {
    const char* reason;
    std::string name;
    std::string once;   ///< as a URL has it
    std::string twice;  ///< as a URL within a URL has it
  };
  const Row rows[] = {
      {"a space", "a b", "a%20b", "a%2520b"},
      {"a comma", "a,b", "a%2Cb", "a%252Cb"},
      {"an apostrophe", "a'b", "a%27b", "a%2527b"},
      {"a quote", "a\"b", "a%22b", "a%2522b"},
      {"an equals sign", "a=b", "a%3Db", "a%253Db"},
      {"an ampersand", "a&b", "a%26b", "a%2526b"},
      {"a hash", "a#b", "a%23b", "a%2523b"},
      {"a per cent sign that begins no escape", "100%", "100%25", "100%2525"},
      {"an escape that stands for itself", "a%20b", "a%2520b", "a%252520b"},
      {"a plus sign", "a+b", "a%2Bb", "a%252Bb"},
      {"a semicolon", "a;b", "a%3Bb", "a%253Bb"},
      {"another script", "\u65e5", "%E6%97%A5", "%25E6%2597%25A5"},
      {"a line feed", "a\nb", "a%0Ab", "a%250Ab"},
      {"bytes that are not UTF-8", "a\xff", "a%FF", "a%25FF"},
      {"a dash at the front", "-a", "-a", "-a"},
      {"a field code of a desktop entry", "%u", "%25u", "%2525u"},
  };
  for (const Row& row : rows) {
    const std::string path = "/d/0/" + row.name;
    EXPECT_EQ(given(DraftWay::kEvolution, path),
              Words{"mailto:?attach=file%3A%2F%2F%2Fd%2F0%2F" + row.twice})
        << row.reason;
    EXPECT_EQ(given(DraftWay::kKMail, path),
              (Words{"--composer", "--attach=file:///d/0/" + row.once}))
        << row.reason;
    EXPECT_EQ(given(DraftWay::kClaws, path), (Words{"--compose", "mailto:", "--attach", path}))
        << row.reason;
    EXPECT_EQ(given(DraftWay::kSylpheed, path), (Words{"--compose", "mailto:", "--attach", path}))
        << row.reason;
    EXPECT_EQ(given(DraftWay::kBalsa, path), (Words{"mailto:", "--attach=file:///d/0/" + row.once}))
        << row.reason;
    EXPECT_EQ(given(DraftWay::kMutt, path), (Words{"-a", path, "--"})) << row.reason;
    EXPECT_EQ(given(DraftWay::kAerc, path), Words{"mailto:?attach=%2Fd%2F0%2F" + row.once})
        << row.reason;
    EXPECT_EQ(given(DraftWay::kMailLink, path), Words{"mailto:"}) << row.reason;
  }
}

Words whole_draft(DraftWay way) {
  const DraftFields draft{.subject = "-S\u00fc, it's \"q\" & 100%",
                          .to = {"a@x.org", "Ann B <b@x.org>"},
                          .cc = {"c@x.org"},
                          .bcc = {"d@x.org", "e@x.org"},
                          .text = "one & two\nthree"};
  return client_arguments(way, draft, {.text = "/d/text.txt", .attachments = {"/d/0/f", "/d/1/g"}});
}

TEST(ClientArguments, AWholeDraftInEachWay) {
  const std::string fields =
      "cc=c%40x.org&bcc=d%40x.org%2C%20e%40x.org"
      "&subject=-S%C3%BC%2C%20it%27s%20%22q%22%20%26%20100%25&body=one%20%26%20two%0D%0Athree";
  const std::string to = "mailto:a%40x.org,Ann%20B%20%3Cb%40x.org%3E";
  EXPECT_EQ(whole_draft(DraftWay::kEvolution),
            Words{to + "?" + fields +
                  "&attach=file%3A%2F%2F%2Fd%2F0%2Ff&attach=file%3A%2F%2F%2Fd%2F1%2Fg"});
  EXPECT_EQ(whole_draft(DraftWay::kKMail),
            (Words{"--composer", "--subject=-S\u00fc, it's \"q\" & 100%", "--cc=c@x.org",
                   "--bcc=d@x.org, e@x.org", "--body=one & two\nthree", "--attach=file:///d/0/f",
                   "--attach=file:///d/1/g", "--", "a@x.org", "Ann B <b@x.org>"}));
  EXPECT_EQ(whole_draft(DraftWay::kClaws),
            (Words{"--compose", to + "?" + fields, "--attach", "/d/0/f", "/d/1/g"}));
  EXPECT_EQ(whole_draft(DraftWay::kSylpheed),
            (Words{"--compose", to + "?cc=c%40x.org" + fields.substr(fields.find("&subject=")),
                   "--attach", "/d/0/f", "/d/1/g"}));
  EXPECT_EQ(whole_draft(DraftWay::kBalsa),
            (Words{to + "?" + fields, "--attach=file:///d/0/f", "--attach=file:///d/1/g"}));
  EXPECT_EQ(whole_draft(DraftWay::kAerc), Words{"mailto:a@x.org,Ann B <b@x.org>?" + fields +
                                                "&attach=%2Fd%2F0%2Ff&attach=%2Fd%2F1%2Fg"});
  EXPECT_EQ(whole_draft(DraftWay::kMailLink), Words{"mailto:a@x.org,b@x.org?" + fields});
  EXPECT_EQ(whole_draft(DraftWay::kMutt),
            (Words{"-s", "-S\u00fc, it's \"q\" & 100%", "-i", "/d/text.txt", "-c", "c@x.org", "-b",
                   "d@x.org", "-b", "e@x.org", "-a", "/d/0/f", "/d/1/g", "--", "a@x.org",
                   "Ann B <b@x.org>"}));
}

TEST(ClientArguments, AnEmptyDraftIsAnEmptyWindow) {
  EXPECT_EQ(client_arguments(DraftWay::kEvolution, {}, {}), Words{"mailto:"});
  EXPECT_EQ(client_arguments(DraftWay::kKMail, {}, {}), Words{"--composer"});
  EXPECT_EQ(client_arguments(DraftWay::kClaws, {}, {}), (Words{"--compose", "mailto:"}));
  EXPECT_EQ(client_arguments(DraftWay::kMutt, {}, {}), Words{"--"});
  EXPECT_EQ(client_arguments(DraftWay::kBalsa, {}, {}), Words{"mailto:"});
  EXPECT_EQ(client_arguments(DraftWay::kAerc, {}, {}), Words{"mailto:"});
  EXPECT_EQ(client_arguments(DraftWay::kMailLink, {}, {}), Words{"mailto:"});
  EXPECT_EQ(client_arguments(DraftWay::kMessageFile, {}, {}), Words{});
}

TEST(ClientArguments, ARecipientIsNeitherAFileNorAnOption) {
  DraftFields draft;
  draft.to = {"file:///etc/passwd", "--attach=/etc/passwd", "a?attach=/etc/passwd&body=x"};
  const std::string link =
      "mailto:file%3A%2F%2F%2Fetc%2Fpasswd,--attach%3D%2Fetc%2Fpasswd,"
      "a%3Fattach%3D%2Fetc%2Fpasswd%26body%3Dx";
  EXPECT_EQ(client_arguments(DraftWay::kEvolution, draft, {}), Words{link});
  EXPECT_EQ(client_arguments(DraftWay::kKMail, draft, {}),
            (Words{"--composer", "--", "<file:///etc/passwd>", "--attach=/etc/passwd",
                   "a?attach=/etc/passwd&body=x"}));
  EXPECT_EQ(client_arguments(DraftWay::kClaws, draft, {}), (Words{"--compose", link}));
  EXPECT_EQ(client_arguments(DraftWay::kBalsa, draft, {}), Words{link});
  const std::string lost = "a%3Fattach=/etc/passwd%26body=x";  // aerc decodes no recipient
  EXPECT_EQ(client_arguments(DraftWay::kAerc, draft, {}),
            Words{"mailto:file:///etc/passwd,--attach=/etc/passwd," + lost});
  EXPECT_EQ(client_arguments(DraftWay::kMailLink, draft, {}), Words{link});
  EXPECT_EQ(client_arguments(DraftWay::kMutt, draft, {}).front(), "--");
}

TEST(ClientArguments, NoTextIsEverShortened) {
  DraftFields draft;
  const ClientFiles files{.text = "/d/text.txt", .attachments = {}};
  draft.text = std::string(131071 - 7, 'x');
  EXPECT_EQ(client_arguments(DraftWay::kKMail, draft, files).back(), "--body=" + draft.text);
  EXPECT_TRUE(are_startable(client_arguments(DraftWay::kKMail, draft, files)));
  draft.text += "x";
  EXPECT_EQ(client_arguments(DraftWay::kKMail, draft, files).back(), "--msg=file:///d/text.txt");
  EXPECT_TRUE(are_startable(client_arguments(DraftWay::kMutt, draft, files)));
  for (const DraftWay way : {DraftWay::kEvolution, DraftWay::kClaws}) {
    draft.text = std::string(131071 - std::string("mailto:?body=").size(), 'x');
    EXPECT_TRUE(are_startable(client_arguments(way, draft, files)));
    draft.text += "x";
    EXPECT_FALSE(are_startable(client_arguments(way, draft, files)));
  }
}

TEST(ClientArguments, AMailLinkHas2000BytesAtMostOrNoText) {
  DraftFields draft{.subject = "S", .to = {"a@x.org"}};
  const std::string head = "mailto:a@x.org?subject=S";
  draft.text = std::string(2000 - head.size() - std::string("&body=").size(), 'x');
  EXPECT_FALSE(is_text_too_long(DraftWay::kMailLink, draft));
  EXPECT_EQ(client_arguments(DraftWay::kMailLink, draft, {}), Words{head + "&body=" + draft.text});
  draft.text += "x";
  EXPECT_TRUE(is_text_too_long(DraftWay::kMailLink, draft));
  EXPECT_EQ(client_arguments(DraftWay::kMailLink, draft, {}), Words{head});
  EXPECT_FALSE(is_text_too_long(DraftWay::kEvolution, draft));
  draft.text.clear();
  draft.subject = std::string(3000, 's');
  EXPECT_FALSE(is_text_too_long(DraftWay::kMailLink, draft)) << "there is none";
}

TEST(ClientArguments, ARecipientOfAMailLinkIsABareAddress) {
  const auto to = [](const std::string& recipient) {
    return client_arguments(DraftWay::kMailLink, {.to = {recipient}}, {}).front();
  };
  EXPECT_EQ(to("Ann <a+b@x.org>"), "mailto:a+b@x.org");
  EXPECT_EQ(to("\"<Doe>, J\" <j@x.org>"), "mailto:j@x.org");
  EXPECT_EQ(to("a%b@x.org"), "mailto:a%25b@x.org");
}

TEST(ClientArguments, WhoReadsFilesIsKnown) {
  DraftFields draft;
  for (const DraftWay way : {DraftWay::kEvolution, DraftWay::kKMail, DraftWay::kClaws}) {
    draft.text = "x";
    EXPECT_FALSE(reads_files(way, draft, {}));
    draft.text = std::string(131071, 'x');
    EXPECT_EQ(reads_files(way, draft, {}), way == DraftWay::kKMail);
  }
  EXPECT_TRUE(reads_files(DraftWay::kMutt, draft, {}));
  EXPECT_FALSE(reads_files(DraftWay::kMutt, {}, {}));
  EXPECT_TRUE(reads_files(DraftWay::kEvolution, {}, {.text = {}, .attachments = {"/d/0/x"}}));
  EXPECT_FALSE(reads_files(DraftWay::kMailLink, {}, {.text = {}, .attachments = {"/d/0/x"}}));
}

TEST(ClientArguments, AClientGetsNamesThatItWritesWhole) {
  struct Row {
    const char* reason;
    std::string name;
    std::string for_claws;
    std::string for_others;
  };
  const std::string longest = std::string(253, 'n') + "\"\n";
  const Row rows[] = {
      {"as it is", "a, b' = & # % + ;\u65e5", "a, b' = & # % + ;\u65e5", "a, b' = & # % + ;\u65e5"},
      {"a line feed", "a\nb", "a\u240ab", "a\u240ab"},
      {"a quote", "a\"b", "a\u201db", "a\"b"},
      {"no room for the signs", longest, std::string(253, 'n') + "__",
       std::string(253, 'n') + "\"_"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(name_for_client(DraftWay::kClaws, row.name), row.for_claws) << row.reason;
    for (const DraftWay way : {DraftWay::kEvolution, DraftWay::kKMail, DraftWay::kMutt}) {
      EXPECT_EQ(name_for_client(way, row.name), row.for_others) << row.reason;
    }
  }
}

}  // namespace
}  // namespace quoll::compose

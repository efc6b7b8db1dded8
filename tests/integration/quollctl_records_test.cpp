#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/integration/process.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

using test::Ended;

class QuollctlRecords : public ::testing::Test {
 protected:
  [[nodiscard]] Ended quollctl(std::vector<std::string> arguments,
                               const test::Environment& changes = {}) const {
    arguments.insert(arguments.begin(), QUOLLCTL);
    test::Environment environment{{"QUOLL_GROUP_CONTAINERS", folder_.path()},
                                  {"QUOLL_BUNDLE_IDENTIFIER", std::nullopt},
                                  {"LC_ALL", "de_DE"},
                                  {"TZ", "Europe/Berlin"}};
    for (const auto& [name, value] : changes) {
      environment[name] = value;
    }
    return test::run(arguments, environment);
  }
  [[nodiscard]] std::string shared_data(const std::string& name) const {
    return folder_.path("K7Q2M9XT4B.quoll/SharedData/" + name);
  }
  void write(const std::string& name, const char* content) const {
    const std::filesystem::path path = shared_data(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << content;
  }
  static void expect_refusal(const Ended& ended, const std::string& errors) {
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors, "quollctl: " + errors + "\n");
  }

  test::TemporaryFolder folder_;
};

TEST_F(QuollctlRecords, TellsADate) {
  for (const char* same : {"2024-03-07T23:30:00Z", "1709854200"}) {
    const Ended told = quollctl({"date", same});
    EXPECT_EQ(told.status, 0) << told.errors;
    EXPECT_EQ(told.output,
              "seconds:  1709854200\n"
              "exchange: 2024-03-07T23:30:00Z\n"
              "day:      20240308\n"
              "shown as: 08.03.24\n");
  }
  EXPECT_EQ(quollctl({"date", "--json", "--", "-0.5"}).output,
            "{\"seconds\":-0.5,\"exchange\":\"1969-12-31T23:59:59Z\",\"day\":19700101,"
            "\"shown\":\"01.01.70\"}\n");
  EXPECT_NE(quollctl({"date", "--json", "253402300800"}).output.find("\"exchange\":null"),
            std::string::npos)
      << "the format has four digits for the year";
  EXPECT_NE(quollctl({"date", "253402300800"}).output.find("exchange: none\n"), std::string::npos);
}

TEST_F(QuollctlRecords, TellsThePresentMomentByItsTime) {
  const Ended now = quollctl({"date"});
  EXPECT_EQ(now.status, 0) << now.errors;
  const auto shown = now.output.find("shown as: ");
  ASSERT_NE(shown, std::string::npos);
  EXPECT_EQ(now.output[shown + 12], ':') << now.output;
}

TEST_F(QuollctlRecords, RefusesWhatIsNoDate) {
  for (const char* text : {"", "tomorrow", "nan", "inf", "12x", " 12", "0x10", "2024-03-07"}) {
    expect_refusal(quollctl({"date", text}),
                   std::string(text) +
                       " is neither a date of the form 2024-03-07T10:15:00Z nor a "
                       "number of seconds");
  }
  EXPECT_EQ(quollctl({"date", "1", "2"}).status, 2);
}

TEST_F(QuollctlRecords, ListsAccounts) {
  write("Accounts.plist",
        "({ mail = \"a@h\"; name = \"A\\nB\"; type = 3; enabled = YES;"
        " aliases = ({ mail = \"x@h\"; name = X; }); }, { mail = \"b@h\"; })");
  const Ended told = quollctl({"accounts"});
  EXPECT_EQ(told.status, 0) << told.errors;
  EXPECT_EQ(told.output,
            "a@h  A\\nB  type 3\n"
            "  alias x@h  X\n"
            "b@h    type 0  (disabled)\n");
  EXPECT_EQ(quollctl({"accounts", "--json"}).output,
            "[{\"mail\":\"a@h\",\"name\":\"A\\nB\",\"aliases\":[{\"mail\":\"x@h\",\"name\":\"X\","
            "\"account\":\"\"}],\"type\":3,\"enabled\":true},"
            "{\"mail\":\"b@h\",\"name\":\"\",\"aliases\":[],\"type\":0,\"enabled\":false}]\n");
}

TEST_F(QuollctlRecords, SaysWhatTheLibraryLogs) {
  write("Accounts.plist", "(x)");
  const Ended told = quollctl({"accounts"});
  EXPECT_EQ(told.status, 0);
  EXPECT_EQ(told.output, "(null)  (null)  type 0  (disabled)\n");
  EXPECT_TRUE(told.errors.starts_with("quollctl: ExtensionAccount initWithDictonary "))
      << told.errors;
}

TEST_F(QuollctlRecords, ListsContacts) {
  write("Contacts/Addresses.plist",
        "({ mail = \"a@h\"; firstName = Ann; lastName = Lee; }, { mail = \"s@h\"; company = C; })");
  const Ended told = quollctl({"contacts"});
  EXPECT_EQ(told.status, 0) << told.errors;
  EXPECT_EQ(told.output, "Ann Lee <a@h>\nC <s@h>\n");
  EXPECT_EQ(quollctl({"contacts", "--json"}).output,
            "{\"addresses\":[{\"mail\":\"a@h\",\"firstName\":\"Ann\",\"lastName\":\"Lee\","
            "\"company\":\"\",\"nickname\":\"\",\"rank\":0},{\"mail\":\"s@h\",\"firstName\":\"\","
            "\"lastName\":\"\",\"company\":\"C\",\"nickname\":\"\",\"rank\":0}],\"groups\":[]}\n");
  write("Contacts/Addresses.plist", "({ company = (1); })");
  const Ended broken = quollctl({"contacts"});
  EXPECT_EQ(broken.status, 1);
  EXPECT_TRUE(broken.errors.starts_with("quollctl: an address cannot be shown: ")) << broken.errors;
}

TEST_F(QuollctlRecords, TellsAnEmptyStoreFromOneThatCannotBeRead) {
  const std::string accounts = shared_data("Accounts.plist");
  const std::string addresses = shared_data("Contacts/Addresses.plist");
  expect_refusal(quollctl({"accounts"}),
                 accounts + " is not there: the mail application has not written it");
  expect_refusal(quollctl({"contacts"}),
                 addresses + " is not there: the mail application has not written it");
  write("Accounts.plist", "{ mail = m; }");
  write("Contacts/Addresses.plist", "(");
  expect_refusal(
      quollctl({"accounts"}),
      accounts + " cannot be read as a property list that holds a list: it holds a dictionary");
  expect_refusal(quollctl({"contacts", "--json"}),
                 addresses +
                     " cannot be read as a property list that holds a list: line 1, column 2: a "
                     "value was expected");
  write("Accounts.plist", "()");
  write("Contacts/Addresses.plist", "()");
  EXPECT_EQ(quollctl({"accounts"}).status, 0);
  EXPECT_EQ(quollctl({"accounts", "--json"}).output, "[]\n");
  EXPECT_EQ(quollctl({"contacts", "--json"}).output, "{\"addresses\":[],\"groups\":[]}\n");
  const Ended nowhere = quollctl({"accounts"}, {{"QUOLL_GROUP_CONTAINERS", "/dev/null/none"}});
  EXPECT_EQ(nowhere.status, 1);
  EXPECT_TRUE(nowhere.errors.ends_with("quollctl: there is no group container\n"))
      << nowhere.errors;
}

}  // namespace
}  // namespace quoll

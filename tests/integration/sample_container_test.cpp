#include <gtest/gtest.h>

#include <filesystem>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/property_list.h"
#include "tests/integration/process.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

using test::Ended;

class SampleContainerTest : public ::testing::Test {
 protected:
  [[nodiscard]] Ended quollctl(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{QUOLLCTL};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return test::run(command, {{"QUOLL_GROUP_CONTAINERS", folder_.path()},
                               {"QUOLL_BUNDLE_IDENTIFIER", "it.vorlent.quoll2.Quoll-Share"}});
  }

  test::TemporaryFolder folder_;
};

TEST_F(SampleContainerTest, IsReadBackInEveryForm) {
  const std::string data = folder_.path("K7Q2M9XT4B.quoll/SharedData");
  std::string accounts;
  std::string contacts;
  for (const auto& [form, beginning] :
       {std::pair{"xml", "<?xml"}, std::pair{"binary", "bplist00"}, std::pair{"old", "("}}) {
    const Ended written = quollctl({"sample-container", folder_.path(), "--form", form});
    EXPECT_EQ(written.status, 0) << written.errors;
    EXPECT_EQ(written.output, data + "/Accounts.plist\n" + data + "/Contacts/Addresses.plist\n" +
                                  data + "/Contacts/Groups.plist\n");
    EXPECT_TRUE(test::read_file(data + "/Accounts.plist").starts_with(beginning)) << form;

    const Ended read_accounts = quollctl({"accounts", "--json"});
    const Ended read_contacts = quollctl({"contacts", "--json"});
    EXPECT_NE(read_accounts.output.find("\"ann.lee@example.org\""), std::string::npos) << form;
    EXPECT_NE(read_contacts.output.find("\"Zo\xC3\xAB\""), std::string::npos) << form;
    EXPECT_EQ(accounts.empty() ? read_accounts.output : accounts, read_accounts.output) << form;
    EXPECT_EQ(contacts.empty() ? read_contacts.output : contacts, read_contacts.output) << form;
    accounts = read_accounts.output;
    contacts = read_contacts.output;

    const auto groups =
        foundation::read_property_list(test::read_file(data + "/Contacts/Groups.plist"));
    ASSERT_TRUE(groups && groups->as<foundation::List>()) << form;
    EXPECT_EQ(groups->as<foundation::List>().count(), 2U) << form;
  }
}

TEST_F(SampleContainerTest, IsXmlUnlessAskedOtherwise) {
  EXPECT_EQ(quollctl({"sample-container", folder_.path()}).status, 0);
  EXPECT_TRUE(test::read_file(folder_.path("K7Q2M9XT4B.quoll/SharedData/Accounts.plist"))
                  .starts_with("<?xml"));
}

TEST_F(SampleContainerTest, TakesTheLocksOfTheContainer) {
  EXPECT_EQ(quollctl({"sample-container", folder_.path()}).status, 0);
  for (const char* lock :
       {"%2FSharedData%2FAccounts.plist.lock", "%2FSharedData%2FContacts%2FAddresses.plist.lock",
        "%2FSharedData%2FContacts%2FGroups.plist.lock"}) {
    EXPECT_TRUE(std::filesystem::exists(folder_.path("K7Q2M9XT4B.quoll/.locks/") + lock)) << lock;
  }
}

TEST_F(SampleContainerTest, SaysWhatItCannotWrite) {
  const Ended ended = quollctl({"sample-container", folder_.write("file", "")});
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(ended.errors.starts_with("quollctl: ")) << ended.errors;
  EXPECT_EQ(ended.errors.find('\n'), ended.errors.size() - 1) << "one line";
  constexpr int kUsage = 2;
  EXPECT_EQ(quollctl({"sample-container"}).status, kUsage);
  EXPECT_EQ(quollctl({"sample-container", folder_.path(), "--form", "json"}).status, kUsage);
}

}  // namespace
}  // namespace quoll

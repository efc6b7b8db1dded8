#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "quoll/container/accounts_store.h"
#include "quoll/container/contacts_store.h"
#include "quoll/container/group_container.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/format.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"
#include "tests/container/container_test.h"
#include "tests/container/redirecting_coordinator.h"

namespace quoll {
namespace {

using ExtensionUtilities::Accounts;
using ExtensionUtilities::AddressesAndGroups;
using foundation::Error;
using foundation::List;
using foundation::NSURL;
using foundation::Value;
using test::FailingFiles;
using test::redirected;
using test::Redirecting;

const Error kFull{"D", 2, "full", {}};
constexpr const char* kFullText = "Error Domain=D Code=2 \"full\"";
constexpr const char* kAccounts = R"(({ mail = "a@h"; }, { mail = "b@h"; enabled = NO; }))";
constexpr const char* kAddresses = R"(({ mail = "a@h"; firstName = Ann; }))";

List addresses() {
  return AddressesAndGroups().objectForKey("addresses").as<List>();
}

class Stores : public test::ContainerTest {
 protected:
  [[nodiscard]] std::string shared_data() const {
    return folder.path("K7Q2M9XT4B.quoll/SharedData");
  }
  void write(const std::string& name, std::string_view content) const {
    const std::filesystem::path path = shared_data() + "/" + name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << content;
  }
};

std::vector<std::string> mails(const List& records) {
  std::vector<std::string> out;
  for (const Value& record : records) {
    const auto account = record.as<ExtensionAccount>();
    out.push_back(
        foundation::text_of(account ? account->mail() : record.as<ExtensionAddress>()->mail()));
  }
  return out;
}

TEST_F(Stores, AccountsAreReadFromTheLocationThatIsGiven) {
  const auto script = std::make_shared<Redirecting::Script>();
  script->path = folder.write("elsewhere", kAccounts);
  const platform::ScopedDesktop other(redirected(*platform::current_desktop(), script));
  EXPECT_EQ(mails(Accounts()), (std::vector<std::string>{"a@h", "b@h"}));
  EXPECT_EQ(script->asked, shared_data() + "/Accounts.plist");
  EXPECT_EQ(script->options, 1U) << "a deleting access is announced";
  EXPECT_TRUE(log->lines().empty());
}

TEST_F(Stores, WhatWasReadBeforeACoordinationFailedIsUsed) {
  const auto script = std::make_shared<Redirecting::Script>();
  script->error = kFull;
  const platform::ScopedDesktop other(redirected(*platform::current_desktop(), script));
  script->path = folder.write("accounts", kAccounts);
  EXPECT_EQ(Accounts().count(), 2U);
  std::filesystem::create_directories(folder.path("contacts"));
  folder.write("contacts/Addresses.plist", kAddresses);
  script->path = folder.path("contacts");
  EXPECT_EQ(addresses().count(), 1U);
  EXPECT_EQ(log->lines(), (std::vector<std::string>{
                              std::string("NSFileCoordinator Accounts ") + kFullText,
                              std::string("NSFileCoordinator AddressesAndGroups ") + kFullText}));
}

TEST_F(Stores, ACoordinationThatIsNotGrantedGivesNothing) {
  const auto script = std::make_shared<Redirecting::Script>();
  script->runs = false;
  script->error = kFull;
  write("Accounts.plist", kAccounts);
  write("Contacts/Addresses.plist", kAddresses);
  const platform::ScopedDesktop other(redirected(*platform::current_desktop(), script));
  EXPECT_TRUE(Accounts().empty());
  EXPECT_TRUE(addresses().empty());
  EXPECT_EQ(log->lines().size(), 2U);
}

TEST_F(Stores, TheCoordinationIsLoggedBeforeTheRecords) {
  const auto script = std::make_shared<Redirecting::Script>();
  script->error = kFull;
  script->path = folder.write("accounts", "(x)");
  const platform::ScopedDesktop other(redirected(*platform::current_desktop(), script));
  EXPECT_EQ(Accounts().count(), 1U);
  ASSERT_EQ(log->lines().size(), 2U);
  EXPECT_EQ(log->lines()[0], std::string("NSFileCoordinator Accounts ") + kFullText);
  EXPECT_TRUE(log->lines()[1].starts_with("ExtensionAccount initWithDictonary "));
}

TEST_F(Stores, ContactsAreReadFromTheLocationThatIsGiven) {
  const auto script = std::make_shared<Redirecting::Script>();
  script->path = folder.path("not/there/yet");
  const platform::ScopedDesktop other(redirected(*platform::current_desktop(), script));
  EXPECT_TRUE(addresses().empty());
  EXPECT_TRUE(std::filesystem::is_directory(script->path)) << "made with the folders above it";
  EXPECT_FALSE(std::filesystem::exists(shared_data() + "/Contacts"));
  folder.write("not/there/yet/Addresses.plist", kAddresses);
  EXPECT_EQ(mails(addresses()), std::vector<std::string>{"a@h"});
  EXPECT_EQ(script->asked, shared_data() + "/Contacts");
  EXPECT_EQ(script->options, 1U);
  EXPECT_TRUE(log->lines().empty());
}

TEST_F(Stores, AFolderThatCannotBeMadeEndsTheReading) {
  const auto script = std::make_shared<Redirecting::Script>();
  script->path = folder.path("not/there/yet");
  const platform::ScopedDesktop other(redirected(*platform::current_desktop(), script));
  files->fail(FailingFiles::Operation::kCreateDirectory, 1, kFull);
  EXPECT_TRUE(addresses().empty());
  EXPECT_EQ(files->calls(FailingFiles::Operation::kRead), 0) << "the accessor is left at once";
  EXPECT_EQ(log->lines(), std::vector{std::string("AddressesAndGroups ") + kFullText});
}

TEST_F(Stores, NothingIsReadOutsideTheAccess) {
  const auto script = std::make_shared<Redirecting::Script>();
  script->vanishes = true;
  const platform::ScopedDesktop other(redirected(*platform::current_desktop(), script));
  script->path = folder.write("accounts", kAccounts);
  EXPECT_EQ(Accounts().count(), 2U);
  script->path = folder.path("contacts");
  std::filesystem::create_directories(script->path);
  folder.write("contacts/Addresses.plist", kAddresses);
  EXPECT_EQ(addresses().count(), 1U);
}

TEST_F(Stores, WhatIsNoFileIsReadAsNothing) {
  struct Row {
    const char* reason;
    void (*make)(const std::string& path);
  };
  const Row rows[] = {
      {"a folder", [](const std::string& path) { std::filesystem::create_directory(path); }},
      {"a link to itself",
       [](const std::string& path) { std::filesystem::create_symlink(path, path); }},
      {"a link to nothing",
       [](const std::string& path) { std::filesystem::create_symlink(path + ".gone", path); }},
      {"a link to a folder",
       [](const std::string& path) { std::filesystem::create_symlink("/", path); }},
      {"a link to what never ends",
       [](const std::string& path) { std::filesystem::create_symlink("/dev/zero", path); }},
      {"a pipe that nobody writes",
       [](const std::string& path) { EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0); }},
  };
  std::filesystem::create_directories(shared_data() + "/Contacts");
  for (const Row& row : rows) {
    for (const char* name : {"/Accounts.plist", "/Contacts/Addresses.plist"}) {
      std::filesystem::remove(shared_data() + name);
      row.make(shared_data() + name);
    }
    EXPECT_TRUE(Accounts().empty()) << row.reason;
    EXPECT_TRUE(addresses().empty()) << row.reason;
  }
  EXPECT_TRUE(log->lines().empty());
}

TEST_F(Stores, AFileThatMayNotBeReadIsReadAsNothing) {
  const Error denied{"D", foundation::NSFileReadNoPermissionError, "denied", {}};
  write("Accounts.plist", kAccounts);
  write("Contacts/Addresses.plist", kAddresses);
  files->fail(FailingFiles::Operation::kRead, 1, denied);
  EXPECT_TRUE(Accounts().empty());
  files->fail(FailingFiles::Operation::kRead, 1, denied);
  EXPECT_TRUE(addresses().empty());
  EXPECT_TRUE(log->lines().empty());
  files->fail(FailingFiles::Operation::kRead, 2, denied);
  EXPECT_EQ(addresses().count(), 1U) << "the groups do not matter";
}

TEST_F(Stores, LinksAreFollowed) {
  write("elsewhere/Addresses.plist", kAddresses);
  write("elsewhere/accounts", kAccounts);
  std::filesystem::create_symlink("elsewhere/accounts", shared_data() + "/Accounts.plist");
  std::filesystem::create_symlink("elsewhere", shared_data() + "/Contacts");
  EXPECT_EQ(Accounts().count(), 2U);
  EXPECT_EQ(addresses().count(), 1U);
}

TEST_F(Stores, ALinkToNothingIsNoContactsFolderAndIsInTheWay) {
  std::filesystem::create_directories(shared_data());
  for (const char* target : {"Contacts", "gone"}) {
    std::filesystem::create_symlink(target, shared_data() + "/Contacts");
    EXPECT_TRUE(addresses().empty());
    EXPECT_TRUE(std::filesystem::is_symlink(shared_data() + "/Contacts")) << "it is left alone";
    std::filesystem::remove(shared_data() + "/Contacts");
  }
  ASSERT_EQ(log->lines().size(), 2U);
  for (const std::string& line : log->lines()) {
    EXPECT_TRUE(line.starts_with("AddressesAndGroups Error Domain=NSCocoaErrorDomain Code=516 "))
        << line;
  }
}

TEST_F(Stores, TheGroupsAreReadAndNotUsed) {
  write("Contacts/Addresses.plist", kAddresses);
  write("Contacts/Groups.plist", "({ idx = 1; name = G; })");
  const auto read = AddressesAndGroups();
  EXPECT_EQ(files->read(), (std::vector{shared_data() + "/Contacts/Addresses.plist",
                                        shared_data() + "/Contacts/Groups.plist"}));
  EXPECT_EQ(read.count(), 2U);
  ASSERT_NE(read.objectForKey("groups").as<List>(), nullptr);
  EXPECT_TRUE(read.objectForKey("groups").as<List>().empty());
}

TEST_F(Stores, WhatIsAnsweredIsWalkedOverAsItComes) {
  write("Accounts.plist", kAccounts);
  write("Contacts/Addresses.plist", kAddresses);
  std::vector<std::string> found;
  for (const auto& account : Accounts()) {
    found.push_back(foundation::text_of(account.as<ExtensionAccount>()->mail()));
    for (const auto& alias : account.as<ExtensionAccount>()->aliases()) {
      found.push_back(alias.description());
    }
  }
  for (const auto& [key, list] : AddressesAndGroups()) {
    found.push_back(key);
    for (const auto& address : list.list()) {
      found.push_back(foundation::text_of(address.as<ExtensionAddress>()->mail()));
    }
  }
  EXPECT_EQ(found, (std::vector<std::string>{"a@h", "b@h", "addresses", "a@h", "groups"}));
}

TEST_F(Stores, NothingIsKeptBetweenCalls) {
  write("Accounts.plist", kAccounts);
  auto first = Accounts();
  first.addObject("mine");
  EXPECT_EQ(Accounts().count(), 2U);
  write("Accounts.plist", "()");
  EXPECT_TRUE(Accounts().empty());
}

TEST_F(Stores, WithoutAContainerEachLogsOneLine) {
  desktop.reset();
  const platform::ScopedDesktop nothing({.log = log});
  EXPECT_TRUE(Accounts().empty());
  const auto contacts = AddressesAndGroups();
  EXPECT_TRUE(contacts.objectForKey("addresses").as<List>().empty());
  EXPECT_TRUE(contacts.objectForKey("groups").as<List>().empty());
  ASSERT_EQ(log->lines().size(), 2U);
  EXPECT_TRUE(log->lines()[0].starts_with("NSFileCoordinator Accounts Error Domain="));
  EXPECT_TRUE(log->lines()[1].starts_with("NSFileCoordinator AddressesAndGroups Error Domain="));
}

TEST_F(Stores, AMillionAccountsAreRead) {
  constexpr std::size_t kAccountCount = 1'000'000;
  std::string accounts = "(";
  for (std::size_t i = 0; i < kAccountCount; ++i) {
    accounts += "{mail=a;},";
  }
  write("Accounts.plist", accounts + ")");
  const auto read = Accounts();
  ASSERT_EQ(read.count(), kAccountCount);
  EXPECT_EQ(
      foundation::text_of(read.objectAtIndex(kAccountCount - 1).as<ExtensionAccount>()->mail()),
      "a");
  EXPECT_TRUE(log->lines().empty());
}

TEST_F(Stores, ManyThreadsMayRead) {
  write("Accounts.plist", kAccounts);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      EXPECT_EQ(Accounts().count(), 2U);
      EXPECT_EQ(AddressesAndGroups().count(), 2U);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_TRUE(log->lines().empty());
}

}  // namespace
}  // namespace quoll

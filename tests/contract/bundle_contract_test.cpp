#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>

#include "quoll/linux/posix/installed_file.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/desktop.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"
#include "quoll/records/extension_alias.h"
#include "quoll/records/extension_group.h"
#include "tests/support/recorders.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

using foundation::Value;
using Bundle = std::shared_ptr<platform::NSBundle>;

class BundleContract : public ::testing::TestWithParam<Bundle (*)()> {};

TEST_P(BundleContract, WithoutATranslationTheValueStandsInThenTheKey) {
  const Bundle bundle = GetParam()();
  EXPECT_EQ(bundle->localizedStringForKey("not a known key", ""), "not a known key");
  EXPECT_EQ(bundle->localizedStringForKey("not a known key", "value"), "value");
  EXPECT_EQ(bundle->localizedStringForKey("", ""), "");
  EXPECT_EQ(bundle->localizedStringForKey(std::string_view("a\0b", 3), ""), std::string("a\0b", 3));
}

TEST_P(BundleContract, HasAnInformationDictionary) {
  EXPECT_TRUE(GetParam()()->infoDictionary());
}

INSTANTIATE_TEST_SUITE_P(Bundles, BundleContract,
                         ::testing::Values(
                             +[]() -> Bundle { return platform::empty_desktop().bundle; },
                             +[]() -> Bundle { return std::make_shared<test::FixedBundle>("x"); },
                             +[]() -> Bundle { return posix::make_program_bundle("x"); }));

TEST(ProgramBundle, TheEnvironmentOverridesTheIdentifier) {
  const auto identifier = [] {
    return posix::make_program_bundle("org.example.Program")
        ->infoDictionary()
        .objectForKey("CFBundleIdentifier");
  };
  EXPECT_EQ(identifier(), foundation::Value("org.example.Program"));
  ::setenv("QUOLL_BUNDLE_IDENTIFIER", "org.example.Other", 1);
  EXPECT_EQ(identifier(), foundation::Value("org.example.Other"));
  ::setenv("QUOLL_BUNDLE_IDENTIFIER", "", 1);
  EXPECT_TRUE(identifier().is_null());
  ::unsetenv("QUOLL_BUNDLE_IDENTIFIER");
}

class Information : public ::testing::Test {
 protected:
  [[nodiscard]] Value read(const std::string& information) const {
    return posix::make_program_bundle("org.example.Program",
                                      folder_.write("Info.plist", information))
        ->infoDictionary();
  }

  test::TemporaryFolder folder_;
};

TEST_F(Information, IsWhatThePropertyListSays) {
  EXPECT_EQ(read("{CFBundleIdentifier = org.example.Other; Key = (a, b);}").description(),
            "{\n    CFBundleIdentifier = org.example.Other;\n"
            "    Key = (\n        a,\n        b\n    );\n}");
  EXPECT_EQ(read("{Key = a;}").description(),
            "{\n    Key = a;\n    CFBundleIdentifier = org.example.Program;\n}");
}

TEST_F(Information, IsTheIdentifierOnlyWithoutADictionary) {
  for (const char* information : {"", "(a, b)", "{Key = a;", "abc"}) {
    EXPECT_EQ(read(information).description(),
              "{\n    CFBundleIdentifier = org.example.Program;\n}")
        << information;
  }
  EXPECT_EQ(posix::make_program_bundle("x", "/nowhere/Info.plist")->infoDictionary().count(), 1U);
  EXPECT_EQ(posix::make_program_bundle("")->infoDictionary().count(), 0U);
}

TEST_F(Information, GivesWayToTheEnvironment) {
  constexpr const char* kInformation = "{CFBundleIdentifier = org.example.Other; Key = a;}";
  ::setenv("QUOLL_BUNDLE_IDENTIFIER", "org.example.Third", 1);
  EXPECT_EQ(read(kInformation).description(),
            "{\n    Key = a;\n    CFBundleIdentifier = org.example.Third;\n}");
  ::setenv("QUOLL_BUNDLE_IDENTIFIER", "", 1);
  EXPECT_EQ(read(kInformation).description(), "{\n    Key = a;\n}");
  ::unsetenv("QUOLL_BUNDLE_IDENTIFIER");
}

TEST_F(Information, IsInstalledForTheShareExtension) {
  const std::string place = posix::installed_file(posix::InstalledFolder::kData, "Info.plist");
  const auto installed = posix::make_program_bundle("", place)->infoDictionary();
  EXPECT_EQ(installed.objectForKey("CFBundleIdentifier"), Value("it.vorlent.quoll2.Quoll-Share"));
  EXPECT_TRUE(place.starts_with("/")) << place;
  EXPECT_TRUE(place.ends_with("/quoll-share/Info.plist")) << place;
}

std::string little_endian(std::size_t number) {
  std::string bytes;
  for (int at = 0; at < 4; ++at, number >>= 8U) {
    bytes += static_cast<char>(number & 0xFFU);
  }
  return bytes;
}

/// A compiled message catalogue. The keys are in order, as its format wants them.
std::string catalogue(const std::map<std::string, std::string>& translations) {
  const std::size_t count = translations.size();
  constexpr std::size_t kHeader = 28;
  const std::size_t texts_begin = kHeader + 16 * count;
  std::string texts;
  std::string keys_table;
  std::string values_table;
  const auto add = [&](const std::string& text, std::string& table) {
    table += little_endian(text.size()) + little_endian(texts_begin + texts.size());
    texts += text + '\0';
  };
  for (const auto& [key, value] : translations) {
    add(key, keys_table);
    add(value, values_table);
  }
  return little_endian(0x950412de) + little_endian(0) + little_endian(count) +
         little_endian(kHeader) + little_endian(kHeader + 8 * count) + little_endian(0) +
         little_endian(0) + keys_table + values_table + texts;
}

class Catalogue : public ::testing::Test {
 protected:
  Catalogue() {
    ::setenv("LC_ALL", "C.UTF-8", 1);  // every system has it, and it lets LANGUAGE choose
    std::filesystem::create_directories(folder_.path("xx/LC_MESSAGES"));
  }
  ~Catalogue() override {
    ::unsetenv("LC_ALL");
    ::unsetenv("LANGUAGE");
  }
  void write(const std::string& charset,
             const std::map<std::string, std::string>& translations) const {
    auto all = translations;
    all[""] = "Content-Type: text/plain; charset=" + charset + "\n";
    folder_.write("xx/LC_MESSAGES/quoll-share.mo", catalogue(all));
  }
  [[nodiscard]] Bundle bundle(const char* language) const {
    ::setenv("LANGUAGE", language, 1);
    return posix::make_program_bundle("x", "", folder_.path());
  }

  test::TemporaryFolder folder_;
};

TEST_F(Catalogue, TranslatesIntoTheUsersLanguage) {
  write("UTF-8", {{"No subject", "Sans objet"}, {"No Mail", "Pas d’adresse"}});
  const Bundle here = bundle("xx");
  std::filesystem::remove_all(folder_.path("xx"));  // as for a program that confined itself
  EXPECT_EQ(here->localizedStringForKey("No subject", ""), "Sans objet");
  EXPECT_EQ(here->localizedStringForKey("No Mail", "value"), "Pas d’adresse");
  EXPECT_EQ(here->localizedStringForKey("No Name", ""), "No Name") << "is not in the catalogue";
  EXPECT_EQ(here->localizedStringForKey("", ""), "") << "not the catalogue's header";
  EXPECT_STREQ(::setlocale(LC_MESSAGES, nullptr), "C") << "the process keeps its locale";
}

TEST_F(Catalogue, FallsBackOnTheUsersOtherLanguages) {
  write("UTF-8", {{"No subject", "Sans objet"}});
  std::filesystem::create_directories(folder_.path("zz"));
  std::filesystem::rename(folder_.path("xx/LC_MESSAGES"), folder_.path("zz/LC_MESSAGES"));
  std::filesystem::create_directories(folder_.path("xx/LC_MESSAGES"));
  write("UTF-8", {{"No subject", "Kein Betreff"}, {"No Name", "Kein Name"}});
  const Bundle here = bundle("zz:xx");
  std::filesystem::remove_all(folder_.path("xx"));
  EXPECT_EQ(here->localizedStringForKey("No subject", ""), "Sans objet");
  EXPECT_EQ(here->localizedStringForKey("No Name", ""), "Kein Name");
}

TEST_F(Catalogue, GivesUtf8WhateverItHolds) {
  write("ISO-8859-1", {{"No subject", "Sans objet \xE9"}});
  EXPECT_EQ(bundle("xx")->localizedStringForKey("No subject", ""), "Sans objet é");
}

TEST_F(Catalogue, IsThatOfTheLanguageAlone) {
  write("UTF-8", {{"No subject", "Sans objet"}});
  EXPECT_EQ(bundle("yy")->localizedStringForKey("No subject", ""), "No subject");
  ::setenv("LC_ALL", "C", 1);
  EXPECT_EQ(bundle("xx")->localizedStringForKey("No subject", ""), "No subject");
  ::setenv("LC_ALL", "of_NOWHERE", 1);
  EXPECT_EQ(bundle("xx")->localizedStringForKey("No subject", ""), "No subject");
}

TEST_F(Catalogue, TranslatesTheDefaultsOfRecords) {
  write("UTF-8", {{"No Mail", "mail"}, {"No Name", "name"}, {"No subject", "subject"}});
  const platform::ScopedDesktop desktop({.bundle = bundle("xx")});
  EXPECT_EQ(ExtensionAccount::initWithDictonary({})->mail(), Value("mail"));
  EXPECT_EQ(ExtensionAlias::initWithDictonary({})->mail(), Value("mail"));
  EXPECT_EQ(ExtensionGroup::initWithDictonary({})->name(), Value("name"));
  EXPECT_EQ(ExtensionMessage::initWithDictonary({})->subject(), Value("subject"));
  EXPECT_EQ(ExtensionAddress::initWithDictonary({})->mail(), Value("No Mail"))
      << "an address's default is a fixed text";
}

TEST(ProgramBundle, WhatACallerDoesToTheDictionaryStaysWithTheCaller) {
  const auto bundle = posix::make_program_bundle("org.example.Program");
  bundle->infoDictionary().removeObjectForKey("CFBundleIdentifier");
  EXPECT_EQ(bundle->infoDictionary().count(), 1U);
}

}  // namespace
}  // namespace quoll

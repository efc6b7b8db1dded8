#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "quoll/linux/posix/installed_file.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/platform/desktop.h"
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

TEST(ProgramBundle, WhatACallerDoesToTheDictionaryStaysWithTheCaller) {
  const auto bundle = posix::make_program_bundle("org.example.Program");
  bundle->infoDictionary().removeObjectForKey("CFBundleIdentifier");
  EXPECT_EQ(bundle->infoDictionary().count(), 1U);
}

}  // namespace
}  // namespace quoll

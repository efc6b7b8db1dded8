#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "linux/posix/program_bundle.h"
#include "quoll/platform/desktop.h"
#include "tests/support/recorders.h"

namespace quoll {
namespace {

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
        ->objectForKey("CFBundleIdentifier");
  };
  EXPECT_EQ(identifier(), foundation::Value("org.example.Program"));
  ::setenv("QUOLL_BUNDLE_IDENTIFIER", "org.example.Other", 1);
  EXPECT_EQ(identifier(), foundation::Value("org.example.Other"));
  ::setenv("QUOLL_BUNDLE_IDENTIFIER", "", 1);
  EXPECT_TRUE(identifier().is_null());
  ::unsetenv("QUOLL_BUNDLE_IDENTIFIER");
}

TEST(ProgramBundle, WhatACallerDoesToTheDictionaryStaysWithTheCaller) {
  const auto bundle = posix::make_program_bundle("org.example.Program");
  bundle->infoDictionary()->removeObjectForKey("CFBundleIdentifier");
  EXPECT_EQ(bundle->infoDictionary()->count(), 1U);
}

}  // namespace
}  // namespace quoll

#include "quoll/foundation/collections.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "quoll/foundation/exception.h"

namespace quoll::foundation {
namespace {

template <typename Block>
std::string raised(const Block& block) {
  try {
    block();
  } catch (const NSException& exception) {
    return exception.name();
  }
  return "";
}

std::vector<std::string> keys_of(const Dictionary& dictionary) {
  std::vector<std::string> keys;
  for (const auto& entry : dictionary) {
    keys.push_back(entry.key);
  }
  return keys;
}

TEST(List, StoresNoNull) {
  List list;
  EXPECT_EQ(raised([&] { list.addObject(nullptr); }), "NSInvalidArgumentException");
  EXPECT_EQ(raised([] { const List refused{Value("a"), Value()}; }), "NSInvalidArgumentException");
  list.addObject("a");
  EXPECT_EQ(list.count(), 1U);
  EXPECT_EQ(*list.objectAtIndex(0).text(), "a");
  EXPECT_EQ(raised([&] { static_cast<void>(list.objectAtIndex(1)); }), "NSRangeException");
}

TEST(Dictionary, KeepsTheOrderOfArrival) {
  Dictionary dictionary{{"b", 1}, {"a", 2}};
  dictionary.setObject(3, "c");
  dictionary.setObject(4, "b");
  EXPECT_EQ(keys_of(dictionary), (std::vector<std::string>{"b", "a", "c"}));
  EXPECT_EQ(*dictionary.objectForKey("b").integer(), 4) << "replaced in its place";
  dictionary.removeObjectForKey("a");
  dictionary.removeObjectForKey("nobody");
  EXPECT_EQ(keys_of(dictionary), (std::vector<std::string>{"b", "c"}));
  EXPECT_TRUE(dictionary.objectForKey("a").is_null());
  EXPECT_EQ(dictionary.find("a"), nullptr);
}

TEST(Dictionary, StoresNoNull) {
  Dictionary dictionary;
  EXPECT_EQ(raised([&] { dictionary.setObject(nullptr, "a"); }), "NSInvalidArgumentException");
  EXPECT_TRUE(dictionary.empty());
}

TEST(Dictionary, FindsEveryKeyWhenItIsLarge) {
  Dictionary dictionary;
  for (int i = 0; i < 1000; ++i) {
    dictionary.setObject(i, "key" + std::to_string(i * 7919 % 1000));
  }
  ASSERT_EQ(dictionary.count(), 1000U);
  const Dictionary copy(dictionary);
  for (int i = 0; i < 1000; ++i) {
    const std::string key = "key" + std::to_string(i * 7919 % 1000);
    EXPECT_EQ(*dictionary.objectForKey(key).integer(), i);
    EXPECT_EQ(*copy.objectForKey(key).integer(), i) << "the copy has an index of its own";
  }
  EXPECT_EQ(dictionary.find("key1000"), nullptr);
  dictionary.removeObjectForKey("key500");
  EXPECT_EQ(dictionary.find("key500"), nullptr);
  EXPECT_NE(dictionary.find("key501"), nullptr);
  dictionary.setObject(-1, "key501");
  EXPECT_EQ(dictionary.count(), 999U);
}

TEST(Dictionary, EqualityIgnoresTheOrder) {
  EXPECT_EQ((Dictionary{{"a", 1}, {"b", 2}}), (Dictionary{{"b", 2}, {"a", 1}}));
  EXPECT_FALSE((Dictionary{{"a", 1}}) == (Dictionary{{"a", 2}}));
  EXPECT_FALSE((Dictionary{{"a", 1}}) == (Dictionary{{"b", 1}}));
  EXPECT_FALSE((Dictionary{{"a", 1}}) == (Dictionary{{"a", 1}, {"b", 1}}));
}

TEST(Collections, AreReleasedAtAnyDepth) {
  Value nested = std::make_shared<List>();
  for (int depth = 0; depth < 1'000'000; ++depth) {
    if (depth % 2 == 0) {
      nested = std::make_shared<List>(std::vector<Value>{nested});
    } else {
      auto dictionary = std::make_shared<Dictionary>();
      dictionary->setObject(nested, "inner");
      nested = dictionary;
    }
  }
  const std::weak_ptr<Dictionary> outermost = nested.as_dictionary();
  nested = nullptr;
  EXPECT_TRUE(outermost.expired());
}

TEST(Collections, WithStaticStorageAreReleasedAtTheEndOfAProgram) {
  const auto end = [] {
    static const Value kept = std::make_shared<List>(std::vector<Value>{std::make_shared<List>()});
    { const Value first = std::make_shared<List>(std::vector<Value>{kept}); }
    std::exit(0);
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(0), "^$") << "after the objects of the main thread";
}

}  // namespace
}  // namespace quoll::foundation

#include "quoll/foundation/collections.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <utility>

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
  EXPECT_EQ(list.objectAtIndex(0), "a");
  EXPECT_EQ(raised([&] { static_cast<void>(list.objectAtIndex(1)); }), "NSRangeException");
}

TEST(List, IsSharedByItsHandles) {
  List list;
  const List same = list;
  list.addObject("a");
  EXPECT_EQ(same.count(), 1U);
  EXPECT_EQ(same.identity(), list.identity());
  const List other = list.copy();
  list.addObject("b");
  EXPECT_EQ(other, List{"a"});
  EXPECT_NE(other.identity(), list.identity());
}

TEST(List, NewIsEmptyAndNullIsNothing) {
  EXPECT_TRUE(List());
  EXPECT_EQ(List(), List{});
  List null = nullptr;
  EXPECT_FALSE(null);
  EXPECT_FALSE(null.copy());
  EXPECT_EQ(null, nullptr);
  EXPECT_FALSE(null == List()) << "nothing is not an empty list";
  EXPECT_EQ(null.count(), 0U);
  EXPECT_EQ(null.identity(), nullptr);
  EXPECT_EQ(std::distance(null.begin(), null.end()), 0);
  EXPECT_EQ(raised([&] { static_cast<void>(null.objectAtIndex(0)); }), "NSRangeException");
  EXPECT_EQ(raised([&] { null.addObject("a"); }), "NSInvalidArgumentException");
  List moved{"a"};
  const List taken = std::move(moved);
  EXPECT_FALSE(moved);  // NOLINT(bugprone-use-after-move): it is specified
  EXPECT_EQ(taken.count(), 1U);
}

TEST(List, OfNumbersAndOfLists) {
  EXPECT_EQ(List{0}.objectAtIndex(0), 0) << "a zero is not a null";
  const List inner{"a"};
  EXPECT_EQ(List{Value(inner)}.count(), 1U);
  EXPECT_EQ(List(inner).identity(), inner.identity());
}

TEST(Dictionary, IsSharedByItsHandles) {
  Dictionary dictionary;
  const Dictionary same = dictionary;
  dictionary.setObject(1, "a");
  EXPECT_EQ(same.count(), 1U);
  EXPECT_EQ(same.identity(), dictionary.identity());
  const Dictionary other = dictionary.copy();
  dictionary.setObject(2, "b");
  EXPECT_EQ(other, (Dictionary{{"a", 1}}));
}

TEST(Dictionary, NewIsEmptyAndNullIsNothing) {
  EXPECT_TRUE(Dictionary());
  EXPECT_TRUE(Dictionary{});
  Dictionary null = nullptr;
  EXPECT_FALSE(null);
  EXPECT_FALSE(null.copy());
  EXPECT_EQ(null, nullptr);
  EXPECT_FALSE(null == Dictionary());
  EXPECT_FALSE(Dictionary() == null);
  EXPECT_EQ(null.find("a"), nullptr);
  EXPECT_TRUE(null.objectForKey("a").is_null());
  EXPECT_TRUE(keys_of(null).empty());
  const std::string_view invalid = "NSInvalidArgumentException";
  EXPECT_EQ(raised([&] { null.setObject(1, "a"); }), invalid);
  EXPECT_EQ(raised([&] { null.add_new(1, "a"); }), invalid);
  EXPECT_EQ(raised([&] { null.reserve(1); }), invalid);
  EXPECT_EQ(raised([&] { null.removeObjectForKey("a"); }), invalid);
}

TEST(Dictionary, KeepsTheOrderOfArrival) {
  Dictionary dictionary{{"b", 1}, {"a", 2}};
  dictionary.setObject(3, "c");
  dictionary.setObject(4, "b");
  EXPECT_EQ(keys_of(dictionary), (std::vector<std::string>{"b", "a", "c"}));
  EXPECT_EQ(dictionary.objectForKey("b"), 4) << "replaced in its place";
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
  const Dictionary copy = dictionary.copy();
  for (int i = 0; i < 1000; ++i) {
    const std::string key = "key" + std::to_string(i * 7919 % 1000);
    EXPECT_EQ(dictionary.objectForKey(key), i);
    EXPECT_EQ(copy.objectForKey(key), i) << "the copy has an index of its own";
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

/// Tells when it is gone.
class Tell final : public Object {
 public:
  explicit Tell(bool& gone) : gone_(gone) {}
  Tell(const Tell&) = delete;
  Tell& operator=(const Tell&) = delete;
  ~Tell() override { gone_ = true; }
  [[nodiscard]] std::string_view class_name() const override { return "Tell"; }
  [[nodiscard]] std::string description() const override { return "Tell"; }

 private:
  bool& gone_;
};

TEST(Collections, AreReleasedAtAnyDepth) {
  bool gone = false;
  Value nested = std::make_shared<Tell>(gone);
  for (int depth = 0; depth < 1'000'000; ++depth) {
    nested = depth % 2 == 0 ? Value(List{nested}) : Value(Dictionary{{"inner", nested}});
  }
  nested = nullptr;
  EXPECT_TRUE(gone);
}

TEST(Collections, WithStaticStorageAreReleasedAtTheEndOfAProgram) {
  const auto end = [] {
    static const Value kept = List{Value(List())};
    { const Value first = List{kept}; }
    std::exit(0);
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(0), "^$") << "after the objects of the main thread";
}

}  // namespace
}  // namespace quoll::foundation

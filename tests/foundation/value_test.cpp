#include "quoll/foundation/value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <thread>
#include <type_traits>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/monitor.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/property.h"

namespace quoll::foundation {
namespace {

const Value kText = "text";
const Value kBytes = Bytes{1, 2};
const Value kDate = Date{0};
const Value kNull;

Value list() {
  return List();
}
Value dictionary() {
  return Dictionary();
}
Value object() {
  return NSURL::URLWithString("http://h");
}

template <typename Block>
::testing::AssertionResult wrong_kind(const Block& block) {
  try {
    static_cast<void>(block());
  } catch (const NSException& exception) {
    if (exception.name() == "NSInvalidArgumentException") {
      return ::testing::AssertionSuccess();
    }
  }
  return ::testing::AssertionFailure() << "nothing was raised";
}

TEST(Value, HoldsEachKind) {
  EXPECT_TRUE(kNull.is_null());
  EXPECT_TRUE(Value(nullptr).is_null());
  EXPECT_TRUE(Value(List(nullptr)).is_null());
  EXPECT_TRUE(Value(Dictionary(nullptr)).is_null());
  EXPECT_TRUE(Value(std::shared_ptr<NSURL>()).is_null());
  const Value boolean = true;
  const Value integer = 7U;
  const Value real = 0.5F;
  EXPECT_TRUE(*boolean.boolean());
  EXPECT_EQ(*integer.integer(), 7);
  EXPECT_EQ(*real.real(), 0.5);
  EXPECT_EQ(*kText.text(), "text");
  EXPECT_EQ(Value("a pointer is no boolean").kind(), "a text");
  EXPECT_EQ(kBytes.bytes()->size(), 2U);
  EXPECT_EQ(kDate.date()->seconds_since_1970, 0);
  EXPECT_TRUE(list().as<List>());
  EXPECT_TRUE(dictionary().as<Dictionary>());
  EXPECT_FALSE(list().as<Dictionary>());
  EXPECT_FALSE(kText.as<List>());
  EXPECT_NE(object().as<NSURL>(), nullptr);
  EXPECT_EQ(kText.as<NSURL>(), nullptr);
}

TEST(Value, HoldsUnsignedNumbersWithoutWrapping) {
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  const Value most = static_cast<std::uint64_t>(kMost);
  EXPECT_EQ(*most.integer(), kMost);
  const Value beyond = static_cast<std::uint64_t>(kMost) + 1;
  ASSERT_NE(beyond.real(), nullptr);
  EXPECT_EQ(*beyond.real(), 9223372036854775808.0);
  EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).kind(), "a real");
}

TEST(Value, TakesNoCharacterForANumber) {
  EXPECT_FALSE((std::is_convertible_v<char, Value>));
  EXPECT_FALSE((std::is_constructible_v<Value, char>));
  EXPECT_FALSE((std::is_constructible_v<Value, wchar_t>));
  EXPECT_FALSE((std::is_constructible_v<Value, char8_t>));
  EXPECT_FALSE((std::is_constructible_v<Value, char16_t>));
  EXPECT_FALSE((std::is_constructible_v<Value, char32_t>));
  EXPECT_EQ(Value(std::uint8_t{7}), Value(7)) << "a small number";
}

TEST(Value, SharesWhatItHolds) {
  const Value first = list();
  const Value second = first;
  second.as<List>().addObject(1);
  EXPECT_EQ(first.as<List>().count(), 1U);
}

TEST(ValueAppendText, MakesATextLonger) {
  Value text = "one";
  text.append_text(", two");
  EXPECT_EQ(text, Value("one, two"));
  const Value other = text;
  text.append_text(", three");
  EXPECT_EQ(text, Value("one, two, three"));
  EXPECT_EQ(other, Value("one, two")) << "who shares it keeps the shorter one";
  text.append_text(*text.text());
  EXPECT_EQ(text, Value("one, two, threeone, two, three"));
}

TEST(ValueAppendText, MakesATextOfAnythingElse) {
  for (Value value : {kNull, kBytes, kDate, Value(1), list()}) {
    value.append_text("text");
    EXPECT_EQ(value, kText);
  }
}

TEST(ValueAppendText, DoesNotCopyALongTextEachTime) {
  Value text = "";
  std::set<const char*> places;
  for (int i = 0; i < 10'000; ++i) {
    text.append_text("a piece of text, ");
    places.insert(text.text()->data());
  }
  EXPECT_LT(places.size(), 40U);
}

TEST(ValueLength, CountsBytes) {
  EXPECT_EQ(Value("é").length(), 2U);
  EXPECT_EQ(kBytes.length(), 2U);
  EXPECT_EQ(kNull.length(), 0U);
  for (const Value& other :
       {Value(1), Value(true), Value(0.5), kDate, list(), dictionary(), object()}) {
    EXPECT_TRUE(wrong_kind([&] { return other.length(); })) << other.kind();
  }
}

TEST(ValueInteger, ReadsNumbersAndTexts) {
  constexpr double kHuge = 1e300;
  EXPECT_EQ(Value(3).integerValue(), 3);
  EXPECT_EQ(Value(true).integerValue(), 1);
  constexpr std::int64_t kOdd = (std::int64_t{1} << 53) + 1;
  EXPECT_EQ(Value(kOdd).integerValue(), kOdd) << "not by way of a real";
  EXPECT_EQ(Value(2.9).integerValue(), 2) << "toward zero";
  EXPECT_EQ(Value(-2.9).integerValue(), -2) << "toward zero";
  EXPECT_EQ(Value(kHuge).integerValue(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Value(-kHuge).integerValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Value(9223372036854775808.0).integerValue(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Value(-9223372036854775808.0).integerValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Value(std::nan("")).integerValue(), 0);
  EXPECT_EQ(Value(" 12x").integerValue(), 12);
  EXPECT_EQ(kNull.integerValue(), 0);
  for (const Value& other : {kBytes, kDate, list(), dictionary(), object()}) {
    EXPECT_TRUE(wrong_kind([&] { return other.integerValue(); })) << other.kind();
  }
}

TEST(ValueBool, ReadsNumbersAndTexts) {
  EXPECT_TRUE(Value(true).boolValue());
  EXPECT_TRUE(Value(-1).boolValue());
  EXPECT_TRUE(Value(0.5).boolValue()) << "a real is true when it is not 0";
  EXPECT_TRUE(Value("Yes").boolValue());
  EXPECT_FALSE(Value("0.5").boolValue());
  EXPECT_FALSE(Value(0).boolValue());
  EXPECT_FALSE(Value("").boolValue());
  EXPECT_FALSE(kNull.boolValue());
  for (const Value& other : {kBytes, kDate, list(), dictionary(), object()}) {
    EXPECT_TRUE(wrong_kind([&] { return other.boolValue(); })) << other.kind();
  }
}

TEST(ValueFloat, ReadsNumbersAndTexts) {
  EXPECT_EQ(Value(1699999999).floatValue(), 1700000000.0F);
  EXPECT_EQ(Value("0.5").floatValue(), 0.5F);
  EXPECT_EQ(kNull.floatValue(), 0.0F);
  EXPECT_TRUE(wrong_kind([] { return kDate.floatValue(); }));
}

TEST(ValueString, IsATextOrNothing) {
  EXPECT_EQ(*kText.stringValue(), "text");
  EXPECT_EQ(kNull.stringValue(), nullptr);
  EXPECT_TRUE(wrong_kind([] {
    const Value number = 1;
    return number.stringValue();
  }));
}

TEST(ValueIsEqualToString, AsksTheReceiver) {
  EXPECT_TRUE(kText.isEqualToString("text"));
  EXPECT_FALSE(kText.isEqualToString("Text"));
  EXPECT_FALSE(kText.isEqualToString(kNull));
  EXPECT_FALSE(kText.isEqualToString(1));
  EXPECT_FALSE(kNull.isEqualToString(kNull)) << "null answers nothing";
  EXPECT_TRUE(wrong_kind([] { return Value(1).isEqualToString(1); }));
}

TEST(ValueObjectForKey, AsksDictionariesOnly) {
  const Value holder = Dictionary{{"a", 1}};
  EXPECT_EQ(holder.objectForKey("a"), 1);
  EXPECT_TRUE(holder.objectForKey("b").is_null());
  EXPECT_TRUE(kNull.objectForKey("a").is_null());
  for (const Value& other : {kText, Value(1), kDate, kBytes, list(), object()}) {
    EXPECT_TRUE(wrong_kind([&] { return other.objectForKey("a"); })) << other.kind();
  }
}

TEST(ValueList, WalksListsAndTheKeysOfDictionaries) {
  const Value holder = List{Value(1), Value("b")};
  EXPECT_EQ(holder.list(), (List{1, "b"}));
  const Value keys = Dictionary{{"x", 1}, {"y", 2}};
  EXPECT_EQ(keys.list(), (List{"x", "y"}));
  EXPECT_EQ(holder.list().identity(), holder.as<List>().identity()) << "the list itself";
  EXPECT_EQ(kNull.list(), nullptr);
  for (const Value& other : {kText, Value(1), kDate, kBytes, object()}) {
    EXPECT_TRUE(wrong_kind([&] { return other.list(); })) << other.kind();
  }
}

TEST(ValueDescription, PrintsEachKind) {
  struct Case {
    Value value;
    const char* expected;
  };
  const Case cases[] = {
      {kNull, "(null)"},
      {true, "1"},
      {false, "0"},
      {-12, "-12"},
      {0.5, "0.5"},
      {1.0, "1"},
      {1e20, "1e+20"},
      {"a", "a"},
      {Date{1709806500}, "2024-03-07 10:15:00 +0000"},
      {Date{-1}, "1969-12-31 23:59:59 +0000"},
      {Date{-0.5}, "1969-12-31 23:59:59 +0000"},
      {Date{-62135596801}, "-62135596801"},
      {Date{253402300800}, "253402300800"},
      {Date{-62135596800}, "0001-01-01 00:00:00 +0000"},
      {Date{253402300799.5}, "9999-12-31 23:59:59 +0000"},
      {Date{1e300}, "1e+300"},
      {object(), "http://h"},
      {List(), "(\n)"},
      {List{Value("a"), Value(1)}, "(\n    a,\n    1\n)"},
      {List{Value(List{Value("a")})}, "(\n    (\n        a\n    )\n)"},
      {Dictionary{{"k", "v"}}, "{\n    k = v;\n}"},
      {Dictionary{{"k", Dictionary{{"l", 1}}}}, "{\n    k = {\n        l = 1;\n    };\n}"},
      {Bytes{0x0F, 0xA0}, "{length = 2, bytes = 0x0fa0}"},
      {Bytes(24, 1), "{length = 24, bytes = 0x010101010101010101010101010101010101010101010101}"},
      {Bytes(25, 1),
       "{length = 25, bytes = 0x010101010101010101010101010101010101010101010101...}"},
  };
  for (const Case& row : cases) {
    EXPECT_EQ(row.value.description(), row.expected);
  }
}

TEST(ValueDescription, EndsForAListThatHoldsItself) {
  List self;
  Dictionary between{{"list", self}};
  self.addObject(between);
  EXPECT_NE(Value(self).description().find("..."), std::string::npos);
  between.removeObjectForKey("list");  // or they would keep each other alive
}

TEST(ValueDescription, PrintsSixtyFourListsInsideOneAnother) {
  const auto nested = [](int lists) {
    Value value = "innermost";
    for (int i = 0; i < lists; ++i) {
      value = List{value};
    }
    return value.description();
  };
  EXPECT_NE(nested(64).find("innermost"), std::string::npos);
  EXPECT_EQ(nested(65).find("innermost"), std::string::npos);
}

TEST(ValueDescription, EndsForAListThatDoublesAtEachLevel) {
  Value value = "innermost";
  for (int i = 0; i < 60; ++i) {
    value = List{value, value};
  }
  const std::string printed = value.description();
  EXPECT_NE(printed.find("...\n"), std::string::npos);
  EXPECT_LT(printed.size(), std::size_t{80} << 20U);
}

TEST(ValueKind, IsInWords) {
  const std::pair<Value, const char*> cases[] = {
      {kNull, "null"},     {true, "a boolean"}, {1, "an integer"},
      {0.5, "a real"},     {kDate, "a date"},   {kText, "a text"},
      {kBytes, "bytes"},   {list(), "a list"},  {dictionary(), "a dictionary"},
      {object(), "NSURL"},
  };
  for (const auto& [value, kind] : cases) {
    EXPECT_EQ(value.kind(), kind);
  }
}

TEST(ValueEquality, IsByContent) {
  EXPECT_EQ(Value(1), Value(1.0));
  EXPECT_EQ(Value(true), Value(1));
  EXPECT_FALSE(Value(1) == Value("1"));
  EXPECT_EQ(kText, Value("text"));
  EXPECT_FALSE(kText == Value("other"));
  EXPECT_EQ(kNull, Value(nullptr));
  EXPECT_FALSE(kNull == Value(0));
  EXPECT_EQ(kBytes, Value(Bytes{1, 2}));
  EXPECT_FALSE(kBytes == Value(Bytes{1, 3}));
  EXPECT_EQ(kDate, Value(Date{0}));
  EXPECT_FALSE(kDate == Value(Date{1}));
  EXPECT_EQ(object(), object());
  EXPECT_FALSE(object() == kText);
  EXPECT_FALSE(kText == object());
  EXPECT_EQ(Value(List{Value(1)}), Value(List{Value(1)}));
  EXPECT_FALSE(list() == dictionary());
  constexpr std::int64_t kLarge = (std::int64_t{1} << 53) + 1;
  EXPECT_FALSE(Value(kLarge) == Value(kLarge - 1)) << "integers are not compared as reals";
}

TEST(Property, ReadsWhatWasSetFromAnyThread) {
  Property<Value> text;
  Property<std::int64_t> number;
  EXPECT_TRUE(text().is_null());
  EXPECT_EQ(number(), 0);
  std::thread writer([&] {
    for (int i = 0; i < 10000; ++i) {
      text = i % 2 == 0 ? Value("even") : Value("odd");
      number = i;
    }
  });
  for (int i = 0; i < 10000; ++i) {
    const Value seen = text();
    EXPECT_TRUE(seen.is_null() || *seen.text() == "even" || *seen.text() == "odd");
    EXPECT_GE(number(), 0);
  }
  writer.join();
  EXPECT_EQ(text(), "odd");
  EXPECT_EQ(number(), 9999);
}

TEST(Property, IsChangedInOneStep) {
  Property<Value> property{Value("")};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int j = 0; j < 1000; ++j) {
        property.change([](Value& value) { value.append_text("piece,"); });
        const Value read = property();
        EXPECT_TRUE(read.text()->ends_with("piece,"));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(property().length(), 4U * 1000 * 6);
}

TEST(Monitor, LetsTheSameThreadInAgain) {
  struct Locked : Monitor {};
  const Locked locked;
  const auto outer = locked.synchronized();
  const auto inner = locked.synchronized();
  EXPECT_TRUE(inner.owns_lock());
}

}  // namespace
}  // namespace quoll::foundation

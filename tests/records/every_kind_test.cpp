#include <gtest/gtest.h>

#include <map>
#include <string>

#include "quoll/platform/desktop.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"
#include "quoll/records/extension_alias.h"
#include "quoll/records/extension_group.h"
#include "tests/support/every_kind.h"
#include "tests/support/recorders.h"

namespace quoll {
namespace {

using foundation::Dictionary;
using foundation::List;
using foundation::Value;
using test::Kind;

/// The fields of a record by their keys; a field of its own kind before it is set reads as null.
using Fields = std::map<std::string, Value>;

struct Key {
  const char* name;
  enum class Reading { kAsItIs, kInteger, kBoolean, kRecords } reading;
  /// Where it is kept as it is: what stands there when the key is absent.
  Value when_absent = {};
};

struct RecordCase {
  const char* class_name;
  const char* element_class_name;
  /// In the order in which they are read.
  std::vector<Key> keys;
  /// How it reads a dictionary.
  Fields (*read)(const Value& dictionary);
};

/// What a list of records comes to: how many there are.
Value count_of(const List& records) {
  return records ? Value(records.count()) : Value();
}

const std::vector<RecordCase>& records() {
  using R = Key::Reading;
  static const std::vector<RecordCase> cases{
      {"ExtensionAccount",
       "ExtensionAlias",
       {{"mail", R::kAsItIs, "Keine Adresse"},
        {"name", R::kAsItIs, ""},
        {"type", R::kInteger},
        {"enabled", R::kBoolean},
        {"aliases", R::kRecords}},
       [](const Value& dictionary) -> Fields {
         const auto account = ExtensionAccount::initWithDictonary(dictionary);
         return {{"mail", account->mail()},
                 {"name", account->name()},
                 {"type", account->type()},
                 {"enabled", account->enabled()},
                 {"aliases", count_of(account->aliases())}};
       }},
      {"ExtensionAlias",
       nullptr,
       {{"mail", R::kAsItIs, "Keine Adresse"},
        {"name", R::kAsItIs, ""},
        {"account", R::kAsItIs, ""}},
       [](const Value& dictionary) -> Fields {
         const auto alias = ExtensionAlias::initWithDictonary(dictionary);
         return {{"mail", alias->mail()}, {"name", alias->name()}, {"account", alias->account()}};
       }},
      {"ExtensionAddress",
       nullptr,
       {{"mail", R::kAsItIs, "No Mail"},  // of all texts the one that is not translated
        {"firstName", R::kAsItIs, ""},
        {"lastName", R::kAsItIs, ""},
        {"company", R::kAsItIs, ""},
        {"nickname", R::kAsItIs, ""},
        {"rank", R::kInteger}},
       [](const Value& dictionary) -> Fields {
         const auto address = ExtensionAddress::initWithDictonary(dictionary);
         return {{"mail", address->mail()},         {"firstName", address->firstName()},
                 {"lastName", address->lastName()}, {"company", address->company()},
                 {"nickname", address->nickname()}, {"rank", address->rank()}};
       }},
      {"ExtensionGroup",
       "ExtensionAddress",
       {{"idx", R::kAsItIs, ""}, {"name", R::kAsItIs, "Kein Name"}, {"addresses", R::kRecords}},
       [](const Value& dictionary) -> Fields {
         const auto group = ExtensionGroup::initWithDictonary(dictionary);
         return {{"idx", group->idx()},
                 {"name", group->name()},
                 {"addresses", count_of(group->addresses())}};
       }},
  };
  return cases;
}

/// What a record holds after a reading, and the beginnings of the lines that were logged meanwhile.
struct Outcome {
  Fields fields;
  std::vector<std::string> lines;
};

/// The fields that no reading reached.
Fields unset_fields(const RecordCase& record) {
  Fields fields;
  for (const Key& key : record.keys) {
    const bool is_number = key.reading == Key::Reading::kInteger;
    const bool is_boolean = key.reading == Key::Reading::kBoolean;
    fields[key.name] = is_number ? Value(0) : is_boolean ? Value(false) : Value();
  }
  return fields;
}

std::string line_of(const char* class_name) {
  return std::string(class_name) + " initWithDictonary ";
}

/// What the tables say. `kinds` are those under the record's keys, in their order.
Outcome expected_of(const RecordCase& record, const std::vector<const Kind*>& kinds) {
  Outcome outcome{.fields = unset_fields(record), .lines = {}};
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    const Key& key = record.keys[i];
    Value& field = outcome.fields[key.name];
    bool raises = false;
    switch (key.reading) {
      case Key::Reading::kAsItIs:
        field = kinds[i]->value.is_null() ? key.when_absent : kinds[i]->value;
        break;
      case Key::Reading::kInteger:
        raises = !kinds[i]->integer;
        field = kinds[i]->integer.value_or(0);
        break;
      case Key::Reading::kBoolean:
        raises = !kinds[i]->boolean;
        field = kinds[i]->boolean.value_or(false);
        break;
      case Key::Reading::kRecords: {
        raises = !kinds[i]->elements;
        const auto elements = kinds[i]->elements.value_or(Kind::Elements{});
        field = elements.all;
        outcome.lines.assign(elements.failing, line_of(record.element_class_name));
      }
    }
    if (raises) {
      outcome.lines.push_back(line_of(record.class_name));
      break;
    }
  }
  return outcome;
}

/// Content is not enough: what is kept as it is keeps its kind, and is the very same.
bool is_same(const Value& a, const Value& b) {
  return a == b && a.kind() == b.kind() && a.as<List>().identity() == b.as<List>().identity() &&
         a.as<Dictionary>().identity() == b.as<Dictionary>().identity() && a.object() == b.object();
}

class EveryKind : public ::testing::Test {
 protected:
  static void expect_reading(const RecordCase& record, const Value& dictionary,
                             const Outcome& expected, const std::string& reason) {
    const auto log = std::make_shared<test::RecordingLog>();
    const platform::ScopedDesktop desktop(
        {.bundle = std::make_shared<test::FixedBundle>(
             "it.vorlent.quoll2", std::map<std::string, std::string>{{"No Mail", "Keine Adresse"},
                                                                     {"No Name", "Kein Name"}}),
         .log = log});
    const Fields fields = record.read(dictionary);
    for (const auto& [key, value] : expected.fields) {
      EXPECT_TRUE(is_same(fields.at(key), value))
          << reason << ": " << key << " is " << fields.at(key).description();
    }
    const auto lines = log->lines();
    ASSERT_EQ(lines.size(), expected.lines.size()) << reason;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_TRUE(lines[i].starts_with(expected.lines[i])) << reason << ": " << lines[i];
    }
  }

  /// A dictionary with these kinds under the record's keys, in their order.
  static void expect_reading(const RecordCase& record, const std::vector<const Kind*>& kinds) {
    std::vector<Dictionary::Entry> entries;
    std::string reason = record.class_name;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      entries.push_back({record.keys[i].name, kinds[i]->value});
      reason += std::string("; ") + record.keys[i].name + ": " + kinds[i]->reason;
    }
    expect_reading(record, test::dictionary_of(entries), expected_of(record, kinds), reason);
  }
};

TEST_F(EveryKind, UnderEveryTwoKeys) {
  const std::vector<Kind> kinds = test::every_kind();
  for (const RecordCase& record : records()) {
    for (std::size_t a = 0; a < record.keys.size(); ++a) {
      for (std::size_t b = a + 1; b < record.keys.size(); ++b) {
        for (const Kind& first : kinds) {
          for (const Kind& second : kinds) {
            std::vector<const Kind*> chosen(record.keys.size(), &kinds.front());
            chosen[a] = &first;
            chosen[b] = &second;
            expect_reading(record, chosen);
          }
        }
      }
    }
  }
}

TEST_F(EveryKind, InsteadOfTheDictionary) {
  const std::vector<Kind> kinds = test::every_kind();
  for (const RecordCase& record : records()) {
    const std::vector<const Kind*> absent(record.keys.size(), &kinds.front());
    for (const Kind& kind : kinds) {
      const bool reads = kind.value.is_null() || kind.value.as<Dictionary>();
      const Outcome expected = reads ? expected_of(record, absent)
                                     : Outcome{unset_fields(record), {line_of(record.class_name)}};
      expect_reading(record, kind.value, expected,
                     std::string(record.class_name) + " from " + kind.reason);
    }
  }
}

}  // namespace
}  // namespace quoll

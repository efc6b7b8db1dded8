#include <gtest/gtest.h>

#include <string>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/property_list.h"

namespace quoll::foundation {
namespace {

using namespace std::string_literals;

struct Case {
  const char* reason;
  std::string document;
  Value expected = nullptr;  ///< null: refused
};

Value list(std::initializer_list<Value> values) {
  return List(values);
}

Value dictionary(std::initializer_list<Dictionary::Entry> entries) {
  return Dictionary(entries);
}

void expect(const Case& row) {
  const auto found = read_property_list(row.document);
  EXPECT_EQ(found.value_or(Value()), row.expected) << row.reason << ": " << row.document;
}

TEST(OldPropertyList, ReadsEveryKindOfRoot) {
  const Case cases[] = {
      {"a text", "abc", "abc"},
      {"every scalar is text", "42", "42"},
      {"what may stand without quotes", "aZ09_$/:.-", "aZ09_$/:.-"},
      {"a quoted text", "\"a b\"", "a b"},
      {"in the other quotes", "'a \"b\"'", "a \"b\""},
      {"the other quote inside", "\"it's\"", "it's"},
      {"an empty text", "\"\"", ""},
      {"UTF-8", "\"\xC3\xA9\"", "\xC3\xA9"},
      {"line breaks stay", "\"a\r\nb\"", "a\r\nb"},
      {"bytes", "<0fbd77 1c>", Bytes{0x0F, 0xBD, 0x77, 0x1C}},
      {"capital digits, blanks anywhere", "< 0 F\nBD >", Bytes{0x0F, 0xBD}},
      {"no bytes", "<>", Bytes{}},
      {"an empty list", "()", list({})},
      {"a list", "(a, \"b c\", <01>, (d), {})",
       list({"a", "b c", Bytes{1}, list({"d"}), dictionary({})})},
      {"a comma after the last", "(a, b,)", list({"a", "b"})},
      {"no white space", "(a,b)", list({"a", "b"})},
      {"an empty dictionary", "{}", dictionary({})},
      {"a dictionary", "{a = b; \"c d\" = (e); 'f'=g;}",
       dictionary({{"a", "b"}, {"c d", list({"e"})}, {"f", "g"}})},
      {"the last of two values for a key", "{a = b; a = c;}", dictionary({{"a", "c"}})},
      {"white space around", " \t\r\n\v\fa \n", "a"},
      {"a mark of UTF-8", "\xEF\xBB\xBF(a)", list({"a"})},
      {"UTF-16 with a mark", "\xFF\xFE(\0a\0)\0"s, list({"a"})},
      {"comments", "// x\n(/* ( */ a // b)\r, /**/ b) // end", list({"a", "b"})},
      {"comments in a dictionary", "{/**/a /**/ = /**/ b /**/;/**/}", dictionary({{"a", "b"}})},
      {"comments after quotes", "{'a'/**/=/**/'b'/**/;}", dictionary({{"a", "b"}})},
      {"a slash in a text begins no comment", "(http://h/x)", list({"http://h/x"})},
  };
  for (const Case& row : cases) {
    expect(row);
  }
}

TEST(OldPropertyList, ReadsEscapes) {
  const Case cases[] = {
      {"quotes and backslashes", R"(\"\'\\)", "\"'\\"},
      {"control characters", R"(\a\b\f\n\r\t\v)", "\a\b\f\n\r\t\v"},
      {"a line break stands for itself", "a\\\nb", "a\nb"},
      {"so does what has no meaning", R"(\x\u)", "xu"},
      {"and what is not ASCII", "\\\xC3\xA9", "\xC3\xA9"},
      {"octal", R"(\101\60)", "A0"},
      {"one octal digit", R"(\7x)", "\ax"},
      {"at most three octal digits", R"(\1011)", "A1"},
      {"8 is no octal digit", R"(\18)",
       "\x01"
       "8"},
      {"octal characters above ASCII", R"(\351\777)", "\xC3\xA9\xC7\xBF"},
      {"the character zero", R"(\0)", "\0"s},
      {"four hexadecimal digits", R"(\U20aC)", "\xE2\x82\xAC"},
      {"no digit but a letter", R"(\Ux)"},
      {"one hexadecimal digit", R"(\U9x)", "\tx"},
      {"at most four", R"(\U00411)", "A1"},
      {"a pair", R"(\Ud83d\Ude0b)", "\xF0\x9F\x98\x8B"},
      {"no digit", R"(\U)"},
      {"the first half alone", R"(\Ud83d)"},
      {"the first half before another character", R"(\Ud83d\U0041)"},
      {"the first half before another escape", R"(\Ud83d\n)"},
      {"the first half before an escape without digits", R"(\Ud83d\Ux)"},
      {"two first halves", R"(\Ud83d\Ud83d)"},
      {"the second half alone", R"(\Ude0b)"},
  };
  for (const Case& row : cases) {
    expect({row.reason, "\"" + row.document + "\"", row.expected});
  }
}

TEST(OldPropertyList, RefusesWhatIsBroken) {
  const Case cases[] = {
      {"nothing", ""},
      {"white space only", " \n"},
      {"a comment only", "// a"},
      {"two roots", "a b"},
      {"two lists", "()()"},
      {"a list that does not end", "(a"},
      {"a list that ends in a comma", "(a,"},
      {"no comma", "(a b)"},
      {"two commas", "(a,,b)"},
      {"only a comma", "(,)"},
      {"a list closed by another", "(a}"},
      {"a dictionary that does not end", "{a = b;"},
      {"no semicolon", "{a = b}"},
      {"no equals sign", "{a b;}"},
      {"no value", "{a = ;}"},
      {"no key", "{= b;}"},
      {"a list for a key", "{() = b;}"},
      {"bytes for a key", "{<00> = b;}"},
      {"a dictionary closed by another", "{a = b;)"},
      {"an unfinished text", "\"a"},
      {"an unfinished escape", "\"a\\"},
      {"an unfinished pair", "\"\\Ud83d"},
      {"ended by the other quote", "\"a'"},
      {"an odd number of digits", "<012>"},
      {"no digit", "<0g>"},
      {"bytes that do not end", "<01"},
      {"nothing after the mark", "<"},
      {"an unfinished comment", "(a) /* x"},
      {"an unfinished comment before the root", "/* x"},
      {"an unfinished comment in a list", "(/* a)"},
      {"an unfinished comment before a comma", "(a /* , b)"},
      {"an unfinished comment in a dictionary", "{/* a = b;}"},
      {"an unfinished comment before an equals sign", "{a /* = b;}"},
      {"an unfinished comment before the end", "{a = b; /* }"},
      {"a star alone does not end a comment", "/*/ a"},
      {"without quotes only ASCII", "\xC3\xA9"},
      {"another mark", "a@b"},
      {"not UTF-8", "\"\xFF\""},
      {"a zero byte", "a\0"s},
      {"a zero byte first", "\0"s},
  };
  for (const Case& row : cases) {
    expect(row);
  }
}

TEST(OldPropertyList, HasADeepestDepth) {
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '(') + std::string(depth, ')');
  };
  EXPECT_TRUE(read_property_list(nested(kPropertyListDepth)));
  EXPECT_FALSE(read_property_list(nested(kPropertyListDepth + 1)));
  EXPECT_FALSE(read_property_list(std::string(1'000'000, '(')));
  std::string dictionaries = "x";
  for (std::size_t i = 1; i < kPropertyListDepth; ++i) {
    dictionaries = "{a=" + dictionaries + ";}";
  }
  EXPECT_TRUE(read_property_list(dictionaries));
  EXPECT_FALSE(read_property_list("{a=" + dictionaries + ";}"));
}

TEST(OldPropertyList, HasAMostNumberOfValues) {
  std::string values;
  for (std::size_t i = 1; i < kPropertyListValues; ++i) {
    values += "a,";
  }
  EXPECT_TRUE(read_property_list("(" + values + ")"));
  EXPECT_FALSE(read_property_list("(" + values + "a)"));
}

}  // namespace
}  // namespace quoll::foundation

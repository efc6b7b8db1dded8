#include <gtest/gtest.h>

#include <cmath>
#include <limits>
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

Value read(std::string_view document) {
  return read_property_list(document).value_or(Value());
}

/// Equality of values takes 1, 1.0 and true for the same number; here the kind counts too.
void expect(const Case& row, const std::string& document) {
  const Value found = read(document);
  EXPECT_EQ(found, row.expected) << row.reason << ": " << document;
  EXPECT_EQ(found.kind(), row.expected.kind()) << row.reason << ": " << document;
}

std::string in_document(const std::string& root) {
  return "<plist>" + root + "</plist>";
}

TEST(XmlPropertyList, ReadsEveryKindOfRoot) {
  const Case cases[] = {
      {"a text", "<string>a b</string>", "a b"},
      {"white space stays", "<string> a\r\n\tb </string>", " a\r\n\tb "},
      {"an empty text", "<string></string>", ""},
      {"an empty text, short", "<string/>", ""},
      {"true", "<true/>", true},
      {"false", "<false/>", false},
      {"true, long", "<true></true>", true},
      {"blank before the end", "<true />", true},
      {"bytes", "<data>AQL/</data>", Bytes{1, 2, 255}},
      {"bytes over lines", "<data>\n\tAQ\n\tL/\n</data>", Bytes{1, 2, 255}},
      {"padded bytes", "<data>AQ==</data>", Bytes{1}},
      {"no bytes", "<data></data>", Bytes{}},
      {"no bytes, short", "<data/>", Bytes{}},
      {"a moment", "<date>2024-03-07T10:15:00Z</date>", Date{1709806500}},
      {"white space around a moment", "<date> 2024-03-07T10:15:00Z\n</date>", Date{1709806500}},
      {"an empty list", "<array></array>", list({})},
      {"an empty list, short", "<array/>", list({})},
      {"an empty dictionary", "<dict></dict>", dictionary({})},
      {"an empty dictionary, short", "<dict/>", dictionary({})},
      {"a list", "<array><string>a</string><true/><array/></array>", list({"a", true, list({})})},
      {"a dictionary", "<dict><key>a</key><string>b</string><key>c</key><false/></dict>",
       dictionary({{"a", "b"}, {"c", false}})},
      {"an empty key", "<dict><key/><string>b</string></dict>", dictionary({{"", "b"}})},
      {"a key with entities before a value with some",
       "<dict><key>&lt;&gt;</key><string>&amp;</string></dict>", dictionary({{"<>", "&"}})},
      {"the last of two values for a key",
       "<dict><key>a</key><true/><key>a</key><string>b</string></dict>", dictionary({{"a", "b"}})},
      {"between the elements white space, comments, instructions",
       "\n<array> <!-- <true/> --><?x <true/>?>\t<true/><!----></array>\r\n", list({true})},
      {"attributes are not looked at", "<string a='>' b=\">\" c>x</string>", "x"},
      {"an attribute before a short end", "<array a='/'/>", list({})},
      {"a slash in an attribute is no short end", "<string a='/'>x</string>", "x"},
      {"blank before the end of a closing tag", "<string>x</string >", "x"},
  };
  for (const Case& row : cases) {
    expect(row, in_document(row.document));
  }
}

TEST(XmlPropertyList, ReadsTexts) {
  const Case cases[] = {
      {"the five entities", "&amp;&lt;&gt;&quot;&apos;", "&<>\"'"},
      {"characters around them", "a&amp;b&lt;c", "a&b<c"},
      {"a number", "&#65;&#8364;", "A\xE2\x82\xAC"},
      {"a hexadecimal number", "&#x20aC;", "\xE2\x82\xAC"},
      {"a number with zeros", "&#x00000000000000000041;", "A"},
      {"beyond the first plane", "&#x1F60B;", "\xF0\x9F\x98\x8B"},
      {"nothing is replaced twice", "&amp;lt;", "&lt;"},
      {"nothing has a meaning in here", "a<![CDATA[&lt;<b>]] >&]]>c", "a&lt;<b>]] >&c"},
      {"two of these", "<![CDATA[a]]><![CDATA[b]]>", "ab"},
      {"an empty one", "<![CDATA[]]>", ""},
      {"a comment does not count", "a<!-- & < -->b&amp;", "ab&"},
      {"a lonely > is a character", "a>b]]>", "a>b]]>"},
      {"UTF-8", "\xC3\xA9\xE2\x82\xAC", "\xC3\xA9\xE2\x82\xAC"},
      {"an unknown entity", "&nbsp;"},
      {"the name of one, longer", "&ampx;"},
      {"a bare &", "a & b"},
      {"an unfinished entity", "&amp"},
      {"an empty entity", "&;"},
      {"a number without digits", "&#;"},
      {"a hexadecimal number without digits", "&#x;"},
      {"a negative number", "&#-65;"},
      {"no digit", "&#6A;"},
      {"the character zero", "&#0;"},
      {"half of a pair", "&#xD83D;"},
      {"above the last character", "&#x110000;"},
      {"beyond 32 bits", "&#4294967361;"},
      {"an element", "a<true/>b"},
      {"an instruction", "a<?x?>b"},
      {"an unfinished comment", "a<!-- b"},
      {"unfinished in other ways", "<![CDATA[a"},
      {"not UTF-8", "\xC3"},
      {"half of a pair as UTF-8", "\xED\xA0\xBD"},
  };
  for (const Case& row : cases) {
    expect(row, in_document("<string>" + row.document + "</string>"));
    const Value as_key = row.expected.is_null() ? Value() : dictionary({{*row.expected.text(), 1}});
    expect({row.reason, "", as_key},
           in_document("<dict><key>" + row.document + "</key><integer>1</integer></dict>"));
  }
}

TEST(XmlPropertyList, ReadsIntegers) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  const Case cases[] = {
      {"decimal", "42", 42},
      {"zero", "0", 0},
      {"leading zeros are not octal", "010", 10},
      {"negative", "-42", -42},
      {"a plus", "+42", 42},
      {"white space around", "\n 42\t", 42},
      {"an entity", "&#52;2", 42},
      {"the largest", "9223372036854775807", kMax},
      {"the smallest", "-9223372036854775808", kMin},
      {"beyond the largest, as a real", "9223372036854775808", 9223372036854775808.0},
      {"the largest without a sign", "18446744073709551615", 18446744073709551615.0},
      {"hexadecimal", "0x1F", 31},
      {"hexadecimal, capital", "-0Xff", -255},
      {"the largest in hexadecimal", "0xFFFFFFFFFFFFFFFF", 18446744073709551615.0},
      {"below the smallest", "-9223372036854775809"},
      {"beyond 64 bits", "18446744073709551616"},
      {"nothing", ""},
      {"a sign alone", "-"},
      {"two signs", "--1"},
      {"a minus after a plus", "+-1"},
      {"blank after the sign", "- 1"},
      {"a fraction", "1.5"},
      {"an exponent", "1e3"},
      {"something after it", "1a"},
      {"no hexadecimal digit", "0x"},
      {"no such hexadecimal digit", "0x1G"},
      {"a sign after the mark", "0x-1"},
  };
  for (const Case& row : cases) {
    expect(row, in_document("<integer>" + row.document + "</integer>"));
  }
  EXPECT_FALSE(read_property_list(in_document("<integer/>")));
}

TEST(XmlPropertyList, ReadsReals) {
  const Case cases[] = {
      {"a fraction", "0.5", 0.5},
      {"no fraction", "2", 2.0},
      {"an exponent", "-1.5e-3", -0.0015},
      {"a plus", "+2.5", 2.5},
      {"white space around", " 2.5\n", 2.5},
      {"infinity", "inf", std::numeric_limits<double>::infinity()},
      {"nothing", ""},
      {"a plus alone", "+"},
      {"a minus after a plus", "+-1"},
      {"a comma", "1,5"},
      {"something after it", "1.5x"},
      {"hexadecimal", "0x10"},
      {"beyond the largest", "1e999"},
  };
  for (const Case& row : cases) {
    expect(row, in_document("<real>" + row.document + "</real>"));
  }
  const Value nan = read(in_document("<real>nan</real>"));
  ASSERT_TRUE(nan.real());
  EXPECT_TRUE(std::isnan(*nan.real()));
}

TEST(XmlPropertyList, RefusesOtherScalars) {
  const Case cases[] = {
      {"true with content", "<true>x</true>"},
      {"false with content", "<false> </false>"},
      {"a date without Z", "<date>2024-03-07T10:15:00</date>"},
      {"a date that is none", "<date>2024-02-30T10:15:00Z</date>"},
      {"an empty date", "<date/>"},
      {"bytes without padding", "<data>AQ</data>"},
      {"no Base64", "<data>A*==</data>"},
      {"unpadded after blanks", "<data>\nAQ\n</data>"},
  };
  for (const Case& row : cases) {
    expect(row, in_document(row.document));
  }
}

TEST(XmlPropertyList, RefusesBrokenStructure) {
  const Case cases[] = {
      {"no root", ""},
      {"two roots", "<true/><true/>"},
      {"text instead of a root", "x"},
      {"text before the root", "x<true/>"},
      {"text after the root", "<true/>x"},
      {"text between elements", "<array>x<true/></array>"},
      {"a document inside", "<plist><true/></plist>"},
      {"a key as the root", "<key>a</key>"},
      {"a key in a list", "<array><key>a</key></array>"},
      {"an unknown element", "<set></set>"},
      {"an unknown name that begins like one", "<strings>x</strings>"},
      {"a digit after the name", "<string1>x</string1>"},
      {"a quotation mark after the name", "<string\"x</string>"},
      {"another case", "<String>x</String>"},
      {"a prefix", "<p:string>x</p:string>"},
      {"a blank before the name", "< string>x</string>"},
      {"a closing tag first", "</string>"},
      {"closed by another", "<string>x</key>"},
      {"a list closed by another", "<array></dict>"},
      {"a dictionary closed by another", "<dict></array>"},
      {"closed with an attribute", "<string>x</string a='b'>"},
      {"not closed", "<array><true/>"},
      {"a dictionary not closed", "<dict><key>a</key><true/>"},
      {"a value without a key", "<dict><true/></dict>"},
      {"a key without a value", "<dict><key>a</key></dict>"},
      {"two keys for a value", "<dict><key>a</key><key>b</key><true/></dict>"},
      {"a text for a key", "<dict><string>a</string><true/></dict>"},
      {"a broken element in a list", "<array><integer>x</integer></array>"},
      {"a broken value", "<dict><key>a</key><integer>x</integer></dict>"},
      {"an unfinished comment", "<array><!-- </array>"},
      {"an unfinished instruction", "<array><? </array>"},
      {"a comment that is none", "<array><! x --></array>"},
      {"an unfinished attribute", "<string a='b>x</string>"},
      {"a tag inside a tag", "<string a <b>x</string>"},
  };
  for (const Case& row : cases) {
    expect(row, in_document(row.document));
  }
}

TEST(XmlPropertyList, LooksAtWhatSurroundsTheRoot) {
  const std::string plain = in_document("<true/>");
  const Case cases[] = {
      {"a declaration", R"(<?xml version="1.0" encoding="UTF-8"?>)" + plain, true},
      {"another encoding is not looked at", R"(<?xml version="1.0" encoding="x"?>)" + plain, true},
      {"a document type", R"(<!DOCTYPE plist PUBLIC "-//x//EN" "http://x/[>.dtd">)" + plain, true},
      {"all of them",
       "<?xml?>\n<!-- a -->\n<!DOCTYPE plist SYSTEM 'x'>\n<!-- b -->" + plain +
           "\n<!-- c --><?d?>\n",
       true},
      {"white space first", " \n" + plain, true},
      {"a mark of UTF-8", "\xEF\xBB\xBF" + plain, true},
      {"a version", "<plist version=\"1.0\"><true/></plist>", true},
      {"nothing", ""},
      {"white space only", " \n"},
      {"two marks", "\xEF\xBB\xBF\xEF\xBB\xBF" + plain},
      {"an internal subset", "<!DOCTYPE plist [<!ENTITY a \"b\">]>" + plain},
      {"an empty internal subset", "<!DOCTYPE plist []>" + plain},
      {"two document types", "<!DOCTYPE plist><!DOCTYPE plist>" + plain},
      {"an unfinished document type", "<!DOCTYPE plist"},
      {"a document type with an unfinished name", "<!DOCTYPE plist 'x>" + plain},
      {"a tag inside a document type", "<!DOCTYPE plist" + plain},
      {"a document type after the root", plain + "<!DOCTYPE plist>"},
      {"two documents", plain + plain},
      {"text after the document", plain + "x"},
      {"no document element", "<?xml?><true/>"},
      {"another element around it", "<?xml?><array><true/></array>"},
      {"an empty document element", "<plist/>"},
      {"an unfinished instruction", "<?xml" + plain},
      {"a closing tag alone", "<?x?></plist>"},
      {"a zero byte at the end", plain + "\0"s},
  };
  for (const Case& row : cases) {
    expect(row, row.document);
  }
}

TEST(XmlPropertyList, ReadsUtf16WithAMark) {
  const std::string text = in_document("<string>\xC3\xA9</string>");
  std::string big = "\xFE\xFF";
  std::string little = "\xFF\xFE";
  for (const char c : in_document("<string>\xE9</string>")) {
    big.append(1, '\0').append(1, c);
    little.append(1, c).append(1, '\0');
  }
  EXPECT_EQ(read(text), Value("\xC3\xA9"));
  EXPECT_EQ(read(big), Value("\xC3\xA9"));
  EXPECT_EQ(read(little), Value("\xC3\xA9"));
  EXPECT_FALSE(read_property_list(big.substr(0, big.size() - 1))) << "half a unit";
  EXPECT_FALSE(read_property_list(big.substr(2))) << "without the mark";
}

std::string nested(std::size_t depth) {
  std::string out;
  for (std::size_t i = 1; i < depth; ++i) {
    out += i % 2 == 0 ? "<array>" : "<dict><key>a</key>";
  }
  out += "<array/>";
  for (std::size_t i = depth - 1; i >= 1; --i) {
    out += i % 2 == 0 ? "</array>" : "</dict>";
  }
  return in_document(out);
}

TEST(XmlPropertyList, HasADeepestDepth) {
  EXPECT_TRUE(read_property_list(nested(kPropertyListDepth)));
  EXPECT_FALSE(read_property_list(nested(kPropertyListDepth + 1)));
  std::string unclosed = "<plist>";
  for (int i = 0; i < 1'000'000; ++i) {
    unclosed += "<array>";
  }
  EXPECT_FALSE(read_property_list(unclosed)) << "neither a crash nor a long wait";
}

TEST(XmlPropertyList, HasAMostNumberOfValues) {
  std::string values;
  for (std::size_t i = 1; i < kPropertyListValues; ++i) {
    values += "<true/>";
  }
  const auto most = read_property_list(in_document("<array>" + values + "</array>"));
  ASSERT_TRUE(most);
  EXPECT_EQ(most->as<List>().count(), kPropertyListValues - 1) << "the list counts too";
  EXPECT_FALSE(read_property_list(in_document("<array>" + values + "<true/></array>")));
}

}  // namespace
}  // namespace quoll::foundation

#include <gtest/gtest.h>

#include <string>

#include "quoll/foundation/property_list.h"

namespace quoll::foundation {
namespace {

struct Row {
  const char* document;
  std::size_t line;
  std::size_t column;
  const char* reason;
};

void expect(const Row& row) {
  PropertyListFault fault;
  EXPECT_FALSE(read_property_list(row.document, fault)) << row.document;
  EXPECT_EQ(fault.reason, row.reason) << row.document;
  EXPECT_EQ(fault.line, row.line) << row.document;
  EXPECT_EQ(fault.column, row.column) << row.document;
}

TEST(PropertyListFault, HasAPlaceInXml) {
  for (const Row& row : {
           Row{"<plist>\n <array>\n  <string>a</string>\n  <strong>b</strong>\n </array>\n</plist>",
               4, 3, "a value or </array> was expected"},
           Row{"<plist>\n <array>\n  <integer>x</integer>", 3, 3, "this is not what its tag says"},
           Row{"<plist><dict><string>a</string></dict></plist>", 1, 14,
               "<key> or </dict> was expected"},
           Row{"<plist><dict><key>a</key></dict></plist>", 1, 26, "a value was expected"},
           Row{"<plist><string>\xC3\xA9</string>&</plist>", 1, 26, "</plist> was expected"},
           Row{"<plist><string>a&b;</string></plist>", 1, 20,
               "a text does not end here, or holds an entity or a tag that it cannot hold"},
           Row{"<plist><true/></plist> x", 1, 24, "something follows </plist>"},
           Row{"<?xml?><!DOCTYPE plist [<!ENTITY a 'b'>]><plist/>", 1, 24,
               "a comment does not end, or the document type says too much"},
           Row{"<?xml?>\n<array/>", 2, 1, "<plist> was expected"},
       }) {
    expect(row);
  }
}

TEST(PropertyListFault, HasAPlaceInTheOldForm) {
  for (const Row& row : {
           Row{"(", 1, 2, "a value was expected"},
           Row{"(\n  { mail = a; },\n  { mail = b }\n)", 3, 14, "\";\" was expected"},
           Row{"(a b)", 1, 4, "\",\" or \")\" was expected"},
           Row{"{ a }", 1, 5, "a key and \"=\", or \"}\", was expected"},
           Row{"<0f1>", 1, 5, "bytes are pairs of digits and end with \">\""},
           Row{"\"a", 1, 2, "a quoted text does not end"},
           Row{"(\"\\Ud800\")", 1, 9, "an escape stands for no character"},
           Row{"a /* b", 1, 3, "a comment does not end"},
           Row{"a\n\xFF", 2, 1, "this is not UTF-8"},
           Row{"a b", 1, 3, "something follows the first value"},
       }) {
    expect(row);
  }
}

TEST(PropertyListFault, HasNoPlaceInABinaryDocument) {
  expect({"bplist00", 0, 0, "the binary document is broken, or beyond the limits"});
}

}  // namespace
}  // namespace quoll::foundation

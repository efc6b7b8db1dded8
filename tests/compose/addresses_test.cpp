#include "apps/compose/addresses.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include "apps/compose/mail_header.h"

namespace quoll::compose {
namespace {

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const auto& text : texts) {
    all += (all.empty() ? "" : ", ") + text;
  }
  return all;
}

struct Row {
  const char* reason;
  std::string field;
  std::string written;
  std::string plain;
};

void check(const Row& row, std::size_t not_plain = 0) {
  const Addresses read = read_addresses(row.field);
  EXPECT_TRUE(not_plain == 0 || read.not_plain == not_plain) << row.reason << read.not_plain;
  EXPECT_EQ(joined(read.written), row.written) << row.reason;
  EXPECT_EQ(joined(read.plain), row.plain) << row.reason;
}

TEST(Addresses, AreReadAsPeopleWriteThem) {
  for (const Row& row : {
           Row{"none", "", "", ""},
           Row{"one, as it is sent", "a@x;", "a@x", "a@x"},
           Row{"two", "a@x;b@y;", "a@x, b@y", "a@x, b@y"},
           Row{"with a name", "Ann Lee <a@x>", "Ann Lee <a@x>", "Ann Lee <a@x>"},
           Row{"with commas", "a@x, Ann <b@x>", "a@x, Ann <b@x>", "a@x, Ann <b@x>"},
           Row{"a comma in quotes", "\"Lee, Ann\" <a@x>", "\"Lee, Ann\" <a@x>",
               "\"Lee, Ann\" <a@x>"},
           Row{"a semicolon in quotes", "\"a;b\" <a@x>;c@x", "\"a;b\" <a@x>, c@x",
               "\"a;b\" <a@x>, c@x"},
           Row{"quotes that are not needed", "\"Ann\" <a@x>", "Ann <a@x>", "Ann <a@x>"},
           Row{"a quote in a name", "\"A \\\"B\\\" C\" <a@x>", "\"A \\\"B\\\" C\" <a@x>",
               "\"A \\\"B\\\" C\" <a@x>"},
           Row{"the name behind it", "a@x (Ann)", "Ann <a@x>", "Ann <a@x>"},
           Row{"other letters", "J\u00FCrg <j@x>", "=?UTF-8?Q?J=C3=BCrg?= <j@x>",
               "J\u00FCrg <j@x>"},
           Row{"a domain in other letters", "j@b\u00FCcher.example", "j@xn--bcher-kva.example",
               "j@b\u00FCcher.example"},
           Row{"a domain that is a number", "a@[192.0.2.1]", "a@[192.0.2.1]", "a@[192.0.2.1]"},
           Row{"a recipient without an address", "(null);a@x;", "a@x", "a@x"},
           Row{"a group", "g: a@x, Ann <b@x>;c@x", "g: a@x, Ann <b@x>;, c@x",
               "a@x, Ann <b@x>, c@x"},
           Row{"a group of nobody", "hidden:;", "hidden:;", ""},
       }) {
    check(row);
  }
}

TEST(Addresses, WhatIsNoneStaysWhereAPersonSeesIt) {
  for (const Row& row : {
           Row{"two words", "two words;a@x", "two words <>, a@x", "a@x"},
           Row{"a word that the system knows", "root;Ann <b@x>", "root <root>, Ann <b@x>",
               "Ann <b@x>"},
           Row{"words of a group", "g: root, a@x", "g: root <root>, a@x;", "a@x"},
           Row{"two signs", "a@b@c", "\"a@b@c\" <>", ""},
           Row{"a domain with an empty part", "a@x.;a@.x;a@x..y",
               "\"a@x.\" <>, \"a@.x\" <>, \"a@x..y\" <>", ""},
           Row{"no domain", "a@", "\"a@\" <>", ""},
           Row{"nothing in brackets", "Ann <>", "Ann <>", ""},
           Row{"brackets alone", "<>", "\"<>\" <>", ""},
           Row{"groups inside a group", "a:b:c:d@x", "a: \"b:c:d@x\" <>;", ""},
           Row{"a quote without an end", "5\" <a@x>;b@x", "5 <a@x>, b@x", "5 <a@x>, b@x"},
           Row{"a parenthesis without an end", "Ann :( <a@x>;Bob :) <b@x>",
               "Ann: \"(\" <a@x>;, Bob: \")\" <b@x>;", "\"(\" <a@x>, \")\" <b@x>"},
           Row{"longer than any address", std::string(321, 'a') + "@x",
               header_phrase(std::string(321, 'a') + "@x") + " <>", ""},
       }) {
    check(row);
  }
}

TEST(Addresses, WhatAClientIsNotToldIsCounted) {
  for (const Row& row : {
           Row{"a text that is none", "two words", "two words <>", ""},
           Row{"a word that the system knows", "root", "root <root>", ""},
           Row{"a local part in quotes", "\"a b\"@x;c@x", "\"a b\"@x, c@x", "c@x"},
           Row{"what looks like an option", "-a@x;Ann <--b@x>", "-a@x, Ann <--b@x>", ""},
           Row{"what would be decoded", "=?utf-8?q?a?=@x", "=?utf-8?q?a?=@x", ""},
       }) {
    check(row, row.plain.empty() && row.field.find(';') != std::string::npos ? 2 : 1);
  }
  const Addresses all = read_addresses("(null);a@x;hidden:;");
  EXPECT_EQ(all.not_plain, 0U) << "nobody is left out";
}

TEST(Addresses, HaveNoInvisibleCharacter) {
  for (const Row& row : {
           Row{"the direction is turned", "a\u202Eb@x", "\"ab@x\" <>", ""},
           Row{"in the domain", "a@x\u200B.org", "\"a@x.org\" <>", ""},
           Row{"in brackets", "Ann <a\u2066@x>", "\"Ann <a@x>\" <>", ""},
           Row{"a hyphen that is not seen", "a\u00AD@x", "\"a@x\" <>", ""},
           Row{"in a name", "A\u202Enn\u2069 \uFEFF <a@x>", "Ann <a@x>", "Ann <a@x>"},
           Row{"nothing else in a name", "\u200D <a@x>", "a@x", "a@x"},
           Row{"in the name of a group", "g\u200E: a@x", "g: a@x;", "a@x"},
       }) {
    check(row);
  }
}

TEST(Addresses, NoNameLooksLikeAnOption) {
  check({"a name", "-Ann <a@x>", "\"-Ann\" <a@x>", "\"-Ann\" <a@x>"});
}

TEST(Addresses, NothingIsDecodedAndNothingCanBe) {
  for (const Row& row : {
           Row{"line feeds in an encoded name",
               "=?utf-8?b?Zm9vClJlcGx5LVRvOiBldmlsQGV4YW1wbGUub3Jn?= <a@b.org>",
               "=?UTF-8?Q?=3D=3Futf=2D8=3Fb=3FZm9vClJlcGx5LVRvOiBldml?= "
               "=?UTF-8?Q?sQGV4YW1wbGUub3Jn=3F=3D?= <a@b.org>",
               "= ?utf-8?b?Zm9vClJlcGx5LVRvOiBldmlsQGV4YW1wbGUub3Jn?= <a@b.org>"},
           Row{"the same in quotes", "\"=?utf-8?q?a=0Ab?=\" <a@b.org>",
               "=?UTF-8?Q?=3D=3Futf=2D8=3Fq=3Fa=3D0Ab=3F=3D?= <a@b.org>",
               "= ?utf-8?q?a=0Ab?= <a@b.org>"},
           Row{"in the name of a group", "=?utf-8?q?a=0Ab?=: a@x",
               "=?UTF-8?Q?=3D=3Futf=2D8=3Fq=3Fa=3D0Ab=3F=3D?=: a@x;", "a@x"},
           Row{"in an address", "=?utf-8?q?a=0Ab?=@b.org", "=?utf-8?q?a=0Ab?=@b.org", ""},
           Row{"a line break itself", "Ann\nBcc: b@x <a@x>", "Ann Bcc: \"b@x\" <a@x>;",
               "\"b@x\" <a@x>"},
           Row{"line breaks of other alphabets", "A\u0085b\u2028c\x7F <a@x>", "A b c <a@x>",
               "A b c <a@x>"},
       }) {
    check(row);
  }
}

// Sixteen times the text takes about sixteen times as long; a square would be 256 times.
TEST(Addresses, TakeTimeInProportion) {
  const auto own_time = [](const char* piece, std::size_t size) {
    std::string field;
    while (field.size() < size) {
      field += piece;
    }
    const std::clock_t begin = std::clock();
    static_cast<void>(read_addresses(field));
    return std::max<std::clock_t>(std::clock() - begin, CLOCKS_PER_SEC / 10'000);
  };
  for (const char* const piece : {"a:", "a@b;", "a@b,", "\"", "\\\"", "(", "<", "((", "=?", "a:;",
                                  "\"a\"", "@", ">", "<a@b>", "\u00FC@\u00FC;"}) {
    EXPECT_LT(own_time(piece, 80'000), 100 * own_time(piece, 5'000)) << piece;
  }
}

}  // namespace
}  // namespace quoll::compose

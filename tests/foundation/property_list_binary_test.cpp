#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/property_list.h"

namespace quoll::foundation {
namespace {

using namespace std::string_literals;

std::string number(std::uint64_t value, std::size_t size) {
  std::string out;
  while (size-- > 0) {
    out += static_cast<char>(size < sizeof value ? value >> (8 * size) & 0xFFU : 0);
  }
  return out;
}

/// A document taken apart; what is not given is as it should be.
struct Document {
  std::vector<std::string> objects;
  std::string magic = "bplist00";
  std::size_t offset_size = 2;
  std::size_t reference_size = 1;
  std::uint64_t top = 0;
  std::optional<std::uint64_t> count = std::nullopt;
  std::optional<std::uint64_t> table = std::nullopt;
  std::string before_trailer{};

  [[nodiscard]] std::string bytes() const {
    std::string out = magic;
    std::string offsets;
    for (const std::string& object : objects) {
      offsets += number(out.size(), offset_size);
      out += object;
    }
    const std::uint64_t place = table.value_or(out.size());
    return out + offsets + before_trailer + std::string(6, '\0') + number(offset_size, 1) +
           number(reference_size, 1) + number(count.value_or(objects.size()), 8) + number(top, 8) +
           number(place, 8);
  }
};

Value read(const Document& document) {
  return read_property_list(document.bytes()).value_or(Value());
}

Value list(std::initializer_list<Value> values) {
  return List(values);
}

Value dictionary(std::initializer_list<Dictionary::Entry> entries) {
  return Dictionary(entries);
}

struct Case {
  const char* reason;
  std::vector<std::string> objects;
  Value expected = nullptr;  ///< null: refused
};

void expect(const Case& row) {
  const Value found = read({.objects = row.objects});
  EXPECT_EQ(found, row.expected) << row.reason;
  EXPECT_EQ(found.kind(), row.expected.kind()) << row.reason;
}

TEST(BinaryPropertyList, ReadsScalars) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  const Case cases[] = {
      {"false", {"\x08"}, false},
      {"true", {"\x09"}, true},
      {"one byte is unsigned", {"\x10\xFF"}, 255},
      {"two bytes", {"\x11\x01\x02"}, 258},
      {"four bytes are unsigned", {"\x12\xFF\xFF\xFF\xFF"}, 4294967295},
      {"eight bytes are signed", {"\x13" + std::string(8, '\xFF')}, -1},
      {"the largest", {"\x13\x7F" + std::string(7, '\xFF')}, kMax},
      {"sixteen bytes beyond it, as a real",
       {"\x14" + std::string(8, '\0') + "\x80" + std::string(7, '\0')},
       9223372036854775808.0},
      {"sixteen bytes, small", {"\x14" + number(0, 8) + number(7, 8)}, 7},
      {"sixteen bytes, negative", {"\x14" + std::string(16, '\xFF')}, -1},
      {"a single-precision real", {"\x22\x3F\x80\0\0"s}, 1.0},
      {"a real", {"\x23\xBF\xE0\0\0\0\0\0\0"s}, -0.5},
      {"a moment, counted from 2001", {"\x33\x3F\xE0\0\0\0\0\0\0"s}, Date{978307200.5}},
      {"bytes", {"\x43\x01\x00\xFF"s}, Bytes{1, 0, 255}},
      {"no bytes", {"\x40"}, Bytes{}},
      {"ASCII", {"\x53"s + "abc"}, "abc"},
      {"no characters", {"\x50"}, ""},
      {"UTF-8 where ASCII should be", {"\x52\xC3\xA9"}, "\xC3\xA9"},
      {"UTF-16", {"\x62\x00\x61\x20\xAC"s}, "a\xE2\x82\xAC"},
      {"a pair", {"\x62\xD8\x3D\xDE\x0B"}, "\xF0\x9F\x98\x8B"},
      {"no UTF-16", {"\x60"}, ""},
      {"a length of one byte", {"\x5F\x10\x03"s + "abc"}, "abc"},
      {"a length of two", {"\x5F\x11\x00\x03"s + "abc"}, "abc"},
      {"a length of four", {"\x5F\x12\0\0\0\x03"s + "abc"}, "abc"},
      {"a length of eight", {"\x4F\x13"s + number(1, 8) + "a"}, Bytes{'a'}},
      {"a length of UTF-16", {"\x6F\x10\x01\0a"s}, "a"},
  };
  for (const Case& row : cases) {
    expect(row);
  }
}

TEST(BinaryPropertyList, RefusesScalars) {
  const Case cases[] = {
      {"null", {"\0"s}},
      {"a fill byte", {"\x0F"}},
      {"beside false", {"\x07"}},
      {"beside true", {"\x0A"}},
      {"beyond 64 bits", {"\x14" + number(1, 8) + number(0, 8)}},
      {"below 64 bits", {"\x14" + std::string(8, '\xFF') + "\x7F" + std::string(7, '\0')}},
      {"an integer of 32 bytes", {"\x15" + std::string(32, '\0')}},
      {"a real of two bytes", {"\x21\0\0"s}},
      {"a real of sixteen", {"\x24" + std::string(16, '\0')}},
      {"a date of four bytes", {"\x32\0\0\0\0"s}},
      {"a date that is no number", {"\x33\x7F\xF8\0\0\0\0\0\0"s}},
      {"an infinite date", {"\x33\x7F\xF0\0\0\0\0\0\0"s}},
      {"an integer cut short", {"\x11\x01"}},
      {"a real cut short", {"\x23\0\0\0\0\0\0\0"s}},
      {"ASCII cut short", {"\x54"s + "abc"}},
      {"UTF-16 cut short", {"\x62\0\x61\0"s}},
      {"not UTF-8", {"\x52\xC3\x41"}},
      {"the first half of a pair", {"\x61\xD8\x3D"}},
      {"no length", {"\x5F"}},
      {"a length that is no integer", {"\x5F\x50"}},
      {"a length of sixteen bytes", {"\x5F\x14" + number(0, 8) + number(3, 8) + "abc"}},
      {"a length cut short", {"\x5F\x13\0\0"s}},
      {"a huge length", {"\x5F\x13" + std::string(8, '\xFF') + "abc"}},
      {"a huge number of UTF-16 units", {"\x6F\x13\x80" + std::string(7, '\0') + "abc"}},
      {"UTF-8 of another version", {"\x71"s + "a"}},
      {"a reference of an archive", {"\x80\x01"}},
      {"an unknown kind", {"\xF0"}},
  };
  for (const Case& row : cases) {
    expect(row);
  }
}

TEST(BinaryPropertyList, ReadsWhatNests) {
  const Case cases[] = {
      {"an empty list", {"\xA0"}, list({})},
      {"a list", {"\xA2\x01\x02", "\x09", "\x51"s + "a"}, list({true, "a"})},
      {"one object twice", {"\xA2\x01\x01", "\x09"}, list({true, true})},
      {"an empty dictionary", {"\xD0"}, dictionary({})},
      {"keys before values",
       {"\xD2\x01\x02\x03\x04", "\x51"s + "a", "\x51"s + "b", "\x08", "\x09"},
       dictionary({{"a", false}, {"b", true}})},
      {"the last of two values for a key",
       {"\xD2\x01\x01\x02\x03", "\x51"s + "a", "\x08", "\x09"},
       dictionary({{"a", true}})},
      {"a list in a dictionary in a list",
       {"\xA1\x01", "\xD1\x02\x03", "\x51"s + "a", "\xA0"},
       list({dictionary({{"a", list({})}})})},
      {"objects in another order", {"\xA1\x01", "\x09", "broken"}, list({true})},
      {"a list inside itself", {"\xA1\0"s}},
      {"a list inside another inside it", {"\xA1\x01", "\xA1\0"s}},
      {"a dictionary inside itself", {"\xD1\x01\0"s, "\x51"s + "a"}},
      {"a dictionary as its own key", {"\xD1\0\x01"s, "\x09"}},
      {"no such object", {"\xA1\x01"}},
      {"no such key", {"\xD1\x02\x01", "\x09"}},
      {"no such value", {"\xD1\x01\x02", "\x51"s + "a"}},
      {"a key that is no text", {"\xD1\x01\x01", "\x09"}},
      {"bytes for a key", {"\xD1\x01\x02", "\x41"s + "a", "\x09"}},
      {"a broken element", {"\xA1\x01", "\0"s}},
      {"a broken value", {"\xD1\x01\x02", "\x51"s + "a", "\0"s}},
      {"a list cut short", {"\xA2\x01"}},
      {"a dictionary without its values", {"\xD1\x01"}},
      {"a set", {"\xC1\x01", "\x09"}},
  };
  for (const Case& row : cases) {
    expect(row);
  }
  EXPECT_EQ(read({.objects = {"\xA1\0\x01"s, "\x09"}, .reference_size = 2}), list({true}));
}

TEST(BinaryPropertyList, SharesWhatIsReferredToTwice) {
  const Value root = read({.objects = {"\xA2\x01\x01", "\xA0"}});
  const auto list = root.as<List>();
  ASSERT_EQ(list.count(), 2U);
  EXPECT_EQ(list.objectAtIndex(0).as<List>().identity(),
            list.objectAtIndex(1).as<List>().identity());
}

TEST(BinaryPropertyList, ChecksTheTrailer) {
  const std::vector<std::string> good{"\xA1\x01", "\x09"};
  struct Trailer {
    const char* reason;
    Document document;
    bool accepted = false;
  };
  const Trailer cases[] = {
      {"as it should be", {.objects = good}, true},
      {"other sizes", {.objects = good, .offset_size = 8}, true},
      {"the smallest offsets", {.objects = good, .offset_size = 1}, true},
      {"another top", {.objects = good, .top = 1}, true},
      {"another version", {.objects = good, .magic = "bplist01"}},
      {"no objects", {.objects = {}}},
      {"a top that is not there", {.objects = good, .top = 2}},
      {"a huge top", {.objects = good, .top = std::numeric_limits<std::uint64_t>::max()}},
      {"too few objects", {.objects = good, .count = 1}},
      {"too many objects", {.objects = good, .count = 3}},
      {"so many that they wrap", {.objects = good, .count = (1ULL << 63U) + 2}},
      {"offsets of no bytes", {.objects = good, .offset_size = 0}},
      {"offsets of nine bytes", {.objects = good, .offset_size = 9}},
      {"references of no bytes", {.objects = good, .reference_size = 0}},
      {"references of nine bytes", {.objects = good, .reference_size = 9}},
      {"a table inside the magic", {.objects = good, .table = 7}},
      {"a table behind the end", {.objects = good, .table = 1000}},
      {"bytes behind the table", {.objects = good, .before_trailer = "x"}},
  };
  for (const Trailer& row : cases) {
    EXPECT_EQ(!read(row.document).is_null(), row.accepted) << row.reason;
  }
  const std::string whole = Document{.objects = good}.bytes();
  for (std::size_t size = std::string_view("bplist").size(); size < whole.size(); ++size) {
    EXPECT_FALSE(read_property_list(whole.substr(0, size))) << size;
  }
}

TEST(BinaryPropertyList, ChecksOffsets) {
  const auto with_offset = [](unsigned offset) {
    std::string file = Document{.objects = {"\x09"}, .offset_size = 1}.bytes();
    file[9] = static_cast<char>(offset);
    return read_property_list(file).has_value();
  };
  EXPECT_TRUE(with_offset(8));
  EXPECT_FALSE(with_offset(7)) << "inside the magic";
  EXPECT_FALSE(with_offset(9)) << "inside the table";
  EXPECT_FALSE(with_offset(255)) << "behind the end";
}

/// Each of two objects at one place could be as long as the file, and so could many more.
TEST(BinaryPropertyList, RefusesOverlappingObjects) {
  const auto with_last_at = [](char offset) {
    std::string file =
        Document{.objects = {"\xA2\x01\x02", "\x51"s + "a", ""}, .offset_size = 1}.bytes();
    file[8 + 3 + 2 + 2] = offset;
    return file;
  };
  EXPECT_FALSE(read_property_list(with_last_at(8 + 3)));
  const std::string beside =
      Document{.objects = {"\xA2\x01\x02", "\x51"s + "a", "\x51"s + "a"}, .offset_size = 1}.bytes();
  EXPECT_TRUE(read_property_list(beside));
}

/// Forty lists, each holding the next one twice: small as a file, endless for who walks over it.
TEST(BinaryPropertyList, RefusesDoublingReferences) {
  Document doubling;
  for (unsigned i = 1; i <= 40; ++i) {
    doubling.objects.push_back("\xA2" + number(i, 1) + number(i, 1));
  }
  doubling.objects.emplace_back("\x09");
  EXPECT_TRUE(read(doubling).is_null());
  doubling.top = 20;  // 2^21 values come out of it
  EXPECT_FALSE(read(doubling).is_null());
  doubling.top = 19;  // 2^22
  EXPECT_TRUE(read(doubling).is_null());
}

/// A long key in many dictionaries takes its bytes in each.
TEST(BinaryPropertyList, CountsSharedKeys) {
  constexpr std::size_t kKey = 64 * 1000;
  Document sharing;
  sharing.reference_size = 2;
  sharing.offset_size = 4;
  sharing.objects = {"", "\x5F\x12" + number(kKey, 4) + std::string(kKey, 'k'), "\x09"};
  const auto with = [&](unsigned dictionaries) {
    Document document = sharing;
    document.objects[0] = "\xAF\x11" + number(dictionaries, 2);
    for (unsigned i = 0; i < dictionaries; ++i) {
      document.objects[0] += number(3 + i, 2);
      document.objects.push_back("\xD1" + number(1, 2) + number(2, 2));
    }
    return !read(document).is_null();
  };
  EXPECT_TRUE(with(3900));
  EXPECT_FALSE(with(4100));
}

TEST(BinaryPropertyList, HasADeepestDepth) {
  const auto nested = [](std::size_t depth) {
    Document document;
    document.reference_size = 2;
    for (std::size_t i = 1; i < depth; ++i) {
      document.objects.push_back("\xA1" + number(i, 2));
    }
    document.objects.emplace_back("\xA0");
    return document;
  };
  EXPECT_FALSE(read(nested(kPropertyListDepth)).is_null());
  EXPECT_TRUE(read(nested(kPropertyListDepth + 1)).is_null());
  EXPECT_TRUE(read(nested(30'000)).is_null());

  // Met first where it is not deep, then where it is.
  Document twice = nested(kPropertyListDepth);
  twice.objects[0] = "\xA2" + number(kPropertyListDepth - 1, 2) + number(1, 2);
  EXPECT_FALSE(read(twice).is_null());
  twice.objects.back() = "\xA1" + number(kPropertyListDepth, 2);
  twice.objects.emplace_back("\xA0");
  EXPECT_TRUE(read(twice).is_null());
}

TEST(BinaryPropertyList, HasAMostNumberOfValues) {
  const auto with = [](std::size_t values) {
    Document document;
    document.offset_size = 4;
    document.objects = {"\xAF\x12" + number(values, 4) + std::string(values, '\x01'), "\x09"};
    return !read(document).is_null();
  };
  EXPECT_TRUE(with(kPropertyListValues - 1));
  EXPECT_FALSE(with(kPropertyListValues));
}

}  // namespace
}  // namespace quoll::foundation

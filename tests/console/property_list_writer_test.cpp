#include "apps/console/operations/property_list_writer.h"

#include <gtest/gtest.h>

#include <limits>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/property_list.h"

namespace quoll::console {
namespace {

using foundation::Bytes;
using foundation::Date;
using foundation::Dictionary;
using foundation::List;
using foundation::read_property_list;
using foundation::Value;

constexpr PropertyListForm kForms[] = {PropertyListForm::kXml, PropertyListForm::kBinary,
                                       PropertyListForm::kOld};

Value list(std::initializer_list<Value> values) {
  return List(values);
}

Value dictionary(std::initializer_list<Dictionary::Entry> entries) {
  return Dictionary(entries);
}

/// Texts and bytes only, so that every form keeps it.
Value sample() {
  return list({"abc", "", "a \"b\" 'c' \\ & < > ]]> \n\r\t",
               "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x8B", std::string(300, 'x'), Bytes{},
               Bytes{0, 1, 255}, Bytes(100, 7), list({}), dictionary({}),
               dictionary({{"", "empty"},
                           {"a key", list({"abc", "abc"})},
                           {"\xC3\xA9", dictionary({{"k", "v"}})}})});
}

TEST(PropertyListWriter, IsReadBackInEveryForm) {
  for (const PropertyListForm form : kForms) {
    EXPECT_EQ(read_property_list(write_property_list(sample(), form)), sample());
  }
}

TEST(PropertyListWriter, KeepsTheKindsOfScalars) {
  const Value scalars[] = {true,
                           false,
                           0,
                           -1,
                           std::numeric_limits<std::int64_t>::max(),
                           std::numeric_limits<std::int64_t>::min(),
                           0.5,
                           -1e300,
                           "bplist00",
                           Date{1709806500},
                           Date{-62135596800},
                           Date{253402300799}};
  for (const Value& scalar : scalars) {
    for (const PropertyListForm form : {PropertyListForm::kXml, PropertyListForm::kBinary}) {
      const auto read = read_property_list(write_property_list(scalar, form));
      EXPECT_EQ(read, scalar) << scalar.description();
      EXPECT_EQ(read->kind(), scalar.kind()) << scalar.description();
    }
    EXPECT_EQ(read_property_list(write_property_list(scalar, PropertyListForm::kOld)),
              Value(scalar.description()));
  }
}

TEST(PropertyListWriter, RefusesWhatNoPropertyListHolds) {
  const Value refused[] = {nullptr, foundation::NSURL::URLWithString("http://h/"),
                           list({foundation::NSURL::URLWithString("http://h/")})};
  for (const PropertyListForm form : kForms) {
    for (const Value& value : refused) {
      EXPECT_THROW((void)write_property_list(value, form), foundation::NSException);
    }
  }
  EXPECT_THROW((void)write_property_list(Date{1e18}, PropertyListForm::kXml),
               foundation::NSException);
}

/// No file may crash or hang the reader; what it takes, every form can hold again.
void read_damaged(const std::string& document) {
  if (const auto root = read_property_list(document)) {
    EXPECT_EQ(read_property_list(write_property_list(*root, PropertyListForm::kBinary)), root);
  }
}

TEST(PropertyListReader, TakesNoTruncatedDocument) {
  for (const PropertyListForm form : kForms) {
    const std::string whole = write_property_list(sample(), form);
    const std::size_t end = whole.find_last_not_of('\n') + 1;
    for (std::size_t size = form == PropertyListForm::kBinary ? 6 : 0; size < end; ++size) {
      EXPECT_FALSE(read_property_list(whole.substr(0, size)))
          << size << " bytes of form " << static_cast<int>(form);
    }
  }
}

TEST(PropertyListReader, SurvivesEveryFlippedBit) {
  for (const PropertyListForm form : kForms) {
    std::string document = write_property_list(sample(), form);
    for (char& byte : document) {
      for (unsigned bit = 0; bit < 8; ++bit) {
        const char whole = byte;
        byte = static_cast<char>(static_cast<unsigned char>(byte) ^ 1U << bit);
        read_damaged(document);
        byte = whole;
      }
    }
  }
}

}  // namespace
}  // namespace quoll::console

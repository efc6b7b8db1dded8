#include <gtest/gtest.h>

#include <stdexcept>

#include "quoll/foundation/format.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/desktop.h"
#include "quoll/platform/images.h"
#include "quoll/records/extension_date.h"
#include "tests/support/every_kind.h"
#include "tests/support/fixed_dates.h"
#include "tests/support/recorders.h"

namespace quoll {
namespace {

using foundation::Bytes;
using foundation::Date;
using foundation::Dictionary;
using foundation::Value;

/// Takes any bytes but empty ones for an image as wide as they are many.
class AnyImages final : public platform::Images {
 public:
  std::optional<Size> size(const Bytes& file) override {
    return file.empty() ? std::nullopt
                        : std::optional(Size{static_cast<std::int64_t>(file.size()), 1});
  }
  std::optional<Bytes> convert(const Bytes& /*file*/,
                               platform::BitmapImageFileType /*type*/) override {
    return std::nullopt;
  }
};

/// A formatter that fails like a platform, or like nothing that a record expects.
template <typename Failure>
class FailingFormatter final : public platform::NSDateFormatter {
 public:
  std::string stringFromDate(Date /*date*/) const override { throw Failure("D", "no date"); }
  std::optional<Date> dateFromString(std::string_view /*text*/) const override { return {}; }
};

struct OtherFailure : std::runtime_error {
  OtherFailure(const char* /*name*/, const char* reason) : std::runtime_error(reason) {}
};

class MessageImport : public ::testing::Test {
 protected:
  MessageImport() { ExtensionDate::shared()->Initialize(); }

  static std::shared_ptr<ExtensionMessage> imported(
      std::initializer_list<Dictionary::Entry> entries) {
    return ExtensionMessage::initWithDictonary(Dictionary(entries));
  }

  std::shared_ptr<test::RecordingLog> log = std::make_shared<test::RecordingLog>();
  std::shared_ptr<test::HeldClock> clock = std::make_shared<test::HeldClock>();
  platform::ScopedDesktop desktop{
      {.bundle = std::make_shared<test::FixedBundle>(
           "it.vorlent.quoll2", std::map<std::string, std::string>{{"No subject", "Kein Betreff"}}),
       .log = log,
       .clock = clock,
       .images = std::make_shared<AnyImages>(),
       .dates = std::make_shared<test::FixedDates>()}};
};

TEST_F(MessageImport, TheSubjectsDefaultIsTranslated) {
  EXPECT_EQ(imported({})->subject(), Value("Kein Betreff"));
}

TEST_F(MessageImport, BodiesAndListsStayNull) {
  const auto message = imported({{"subject", "s"}});
  for (const auto* field : {&message->plainBody, &message->htmlBody, &message->toString,
                            &message->ccString, &message->bccString, &message->image}) {
    EXPECT_TRUE((*field)().is_null());
  }
  for (const auto* list : {&message->to, &message->cc, &message->bcc, &message->attachments}) {
    EXPECT_EQ((*list)(), nullptr);
  }
}

TEST_F(MessageImport, TodaysDateShowsItsTime) {
  clock->present = 1700000000;  // 2023-11-14T22:13:20Z
  EXPECT_EQ(imported({{"date", 1699999999}})->dateString(), Value("22:13"));
  EXPECT_EQ(imported({{"date", 1699999999}})->date(), Value(Date{1700000000}));
  EXPECT_EQ(imported({{"date", 1699900000}})->dateString(), Value("11/13/23"));
}

TEST_F(MessageImport, ValuesAreStoredThemselves) {
  foundation::List list;
  const auto message = imported({{"from", list}, {"isUnread", true}});
  EXPECT_EQ(message->from().as<foundation::List>().identity(), list.identity());
  EXPECT_EQ(message->unread().kind(), "a boolean") << "not turned into a number";
  EXPECT_EQ(message->unread(), Value(true));
}

TEST_F(MessageImport, ThePictureIsFlipped) {
  const auto message = imported({{"avatar", "YWJj"}});
  const auto image = message->image().as<platform::NSImage>();
  ASSERT_NE(image, nullptr);
  EXPECT_TRUE(image->flipped);
  EXPECT_EQ(image->data(), (Bytes{'a', 'b', 'c'}));
  EXPECT_TRUE(imported({{"avatar", "YWJ"}})->image().is_null());
  EXPECT_TRUE(imported({{"avatar", ""}})->image().is_null());
}

TEST_F(MessageImport, AFailureLeavesWhatWasFilled) {
  const auto message = imported({{"subject", "s"}, {"date", 86400}, {"avatar", 5}});
  EXPECT_EQ(message->dateString(), Value("1/2/70"));
  EXPECT_TRUE(message->image().is_null());
  ASSERT_EQ(log->lines().size(), 1U);
  EXPECT_TRUE(log->lines()[0].starts_with("ExtensionMessage initWithDictonary "));
}

TEST_F(MessageImport, TheDateIsThereWhenItsTextFails) {
  ExtensionDate::shared()->dateCentrale2 =
      std::make_shared<FailingFormatter<foundation::NSException>>();
  clock->present = 1e9;
  const auto message = imported({{"date", 86400}, {"avatar", "YWJj"}});
  EXPECT_EQ(message->date(), Value(Date{86400}));
  EXPECT_TRUE(message->dateString().is_null());
  EXPECT_TRUE(message->image().is_null());
  EXPECT_EQ(log->lines(), std::vector<std::string>{"ExtensionMessage initWithDictonary no date"});
}

TEST_F(MessageImport, AnotherFailurePasses) {
  ExtensionDate::shared()->dateCentrale2 = std::make_shared<FailingFormatter<OtherFailure>>();
  clock->present = 1e9;
  EXPECT_THROW(imported({{"date", 86400}}), OtherFailure);
  EXPECT_TRUE(log->lines().empty());
}

struct StoredKey {
  const char* name;
  ExtensionMessage::Text ExtensionMessage::*field;
  Value when_absent;
};

const std::vector<StoredKey>& stored_keys() {
  static const std::vector<StoredKey> keys{{"subject", &ExtensionMessage::subject, "Kein Betreff"},
                                           {"messageId", &ExtensionMessage::messageId, ""},
                                           {"from", &ExtensionMessage::from, ""},
                                           {"account", &ExtensionMessage::account, ""},
                                           {"folder", &ExtensionMessage::folderPath, ""},
                                           {"folderStid", &ExtensionMessage::folderStandardId, 0},
                                           {"isUnread", &ExtensionMessage::unread, 0}};
  return keys;
}

TEST_F(MessageImport, EveryKindIsStoredAsItIs) {
  clock->present = 1e9;
  for (const StoredKey& key : stored_keys()) {
    for (const test::Kind& kind : test::every_kind()) {
      const auto message =
          ExtensionMessage::initWithDictonary(test::dictionary_of({{key.name, kind.value}}));
      for (const StoredKey& other : stored_keys()) {
        const bool given = other.field == key.field && !kind.value.is_null();
        const Value& expected = given ? kind.value : other.when_absent;
        const Value stored = ((*message).*other.field)();
        EXPECT_TRUE(stored == expected && stored.kind() == expected.kind())
            << key.name << ": " << kind.reason << ": " << other.name;
      }
      EXPECT_EQ(message->dateString(), Value("1/1/70")) << "and the reading goes on";
    }
  }
  EXPECT_TRUE(log->lines().empty());
}

TEST_F(MessageImport, EveryKindOfDateAndPicture) {
  clock->present = 1e9;
  for (const test::Kind& date : test::every_kind()) {
    for (const test::Kind& avatar : test::every_kind()) {
      const std::size_t lines_before = log->lines().size();
      const auto message = ExtensionMessage::initWithDictonary(
          test::dictionary_of({{"isUnread", 1}, {"date", date.value}, {"avatar", avatar.value}}));
      const std::string reason = std::string(date.reason) + "; " + avatar.reason;
      EXPECT_EQ(message->unread(), Value(1)) << reason;
      const Value moment = date.real ? Value(Date{*date.real}) : Value();
      EXPECT_EQ(message->date(), moment) << reason;
      EXPECT_EQ(message->dateString().is_null(), moment.is_null()) << reason;
      const bool raises = !date.real || (avatar.value.text() == nullptr && !avatar.value.is_null());
      EXPECT_EQ(log->lines().size() - lines_before, raises ? 1U : 0U) << reason;
      const bool is_picture = avatar.value == Value("YWJj");
      EXPECT_EQ(!message->image().is_null(), date.real && is_picture) << reason;
    }
  }
}

}  // namespace
}  // namespace quoll

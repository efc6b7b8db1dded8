#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/monitor.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"

namespace quoll {

/// `ExtensionMessage`: a mail message, as it is passed between the extensions and the mail
/// application. It only holds values; nothing in it changes by itself.
///
/// Each property is atomic and may be null. A list property hands out the record's own list, not a
/// copy: hold the record's lock (`synchronized`) while you read or change a list. A field that
/// comes from a dictionary holds what the dictionary held, of whatever kind.
class ExtensionMessage final : public foundation::Object, public foundation::Monitor {
 public:
  using Text = foundation::Property<foundation::Value>;
  using Number = foundation::Property<foundation::Value>;
  using MutableList = foundation::Property<foundation::List>;

  Text subject;
  Text account;     ///< the application's name of the account that the message belongs to
  Text from;        ///< the sender, as one text
  Text messageId;   ///< the application's identifier of the message
  Text folderPath;  ///< the folder that the message lies in
  Text dateString;  ///< the date, formatted for display
  Text plainBody;
  Text htmlBody;
  foundation::Property<foundation::Value> date;   ///< a point in time
  foundation::Property<foundation::Value> image;  ///< the sender's picture, an `NSImage`
  Number unread;                                  ///< not zero when the message is unread
  Number folderStandardId;  ///< the application's code for the kind of standard folder
  MutableList to{nullptr};  ///< recipients: `ExtensionAddress`, or any other `Addressable`
  MutableList cc{nullptr};
  MutableList bcc{nullptr};
  Text toString;  ///< the recipients as one text, in a message that was read from a URL
  Text ccString;
  Text bccString;
  MutableList attachments{nullptr};  ///< paths (as texts) or file URLs

  explicit ExtensionMessage(foundation::Passkey<ExtensionMessage> /*key*/) {}

  /// The factory `new`, which is allocation followed by `init`. The bodies are empty texts, the
  /// four lists are empty and distinct, everything else is null.
  [[nodiscard]] static std::shared_ptr<ExtensionMessage> make();

  /// `ExtensionMessageWithUrl:`: a new record, filled from the query of a command URL; never null.
  /// Recipients are read into the three texts, attachments as paths. Unknown keys and the command
  /// word are ignored. A null URL gives the record that `make` gives. Raises as parsing a query
  /// does (`URLQueryParameters`).
  [[nodiscard]] static std::shared_ptr<ExtensionMessage> ExtensionMessageWithUrl(
      const std::shared_ptr<foundation::NSURL>& url);

  /// `initWithDictonary:`: a record filled from a dictionary of the mail application; never null.
  ///
  /// What is absent gets a default: the subject the translation of "No subject", any other text the
  /// empty text, a number 0, the date the first of 1970. The date is reduced to single precision,
  /// and `dateString` is made from it. The Base64 text under "avatar" becomes the image. Nothing
  /// else is filled: the bodies and the lists stay null.
  ///
  /// A null dictionary is read as an empty one. A failure is logged and ends the reading; the
  /// record keeps what was filled until then.
  [[nodiscard]] static std::shared_ptr<ExtensionMessage> initWithDictonary(
      const foundation::Value& dictionary);

  /// `queryUrl:`: the command URL "quoll://COMMAND?QUERY" for this message; null when the result is
  /// not a URL. Takes the record's lock. Raises when a field is of a kind that a query cannot hold.
  [[nodiscard]] std::shared_ptr<foundation::NSURL> queryUrl(std::string_view command) const;

  /// `renderHtml`: the message as HTML. With an HTML body, that is this body with a picture tag for
  /// each attachment behind it. Without one, it is the plain body with "<br>" for line feeds and an
  /// anchor around each link. Nothing is escaped. The result replaces the body that it was made
  /// from, so a second call starts from the first result.
  ///
  /// A link that is in the text twice is marked up twice, the second time inside the anchors of the
  /// first; each time doubles the anchors. So the text has a limit of 64 MiB: the link that would
  /// pass it, and all links after it, are left out, and the log says so in one line. The time grows
  /// with the lengths of the body and of the result.
  ///
  /// The attachments are read under the record's lock. Otherwise no other thread may read or change
  /// the record meanwhile. Raises when a body is neither null nor a text.
  std::string renderHtml();

  /// `searchUrlsDetector:`: the links in `text` as absolute URLs, in the order in which they occur.
  /// A link that occurs twice is answered twice.
  [[nodiscard]] std::vector<std::string> searchUrlsDetector(std::string_view text) const;

  /// `isEqual:`: true for the same record, and for another message that `isEqualToModel:` answers
  /// true for.
  [[nodiscard]] bool isEqual(const foundation::Object* other) const override;

  /// `isEqualToModel:`: true for the same record, and for one with the same `messageId` and
  /// `account`. A record without one of these two equals no other.
  [[nodiscard]] bool isEqualToModel(const ExtensionMessage& other) const;

  [[nodiscard]] std::string_view class_name() const override { return "ExtensionMessage"; }
  /// "ExtensionMessage %@" with the subject.
  [[nodiscard]] std::string description() const override;

 private:
  [[gnu::visibility("hidden")]] void init();
};

}  // namespace quoll

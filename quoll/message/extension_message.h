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

/// `ExtensionMessage`: the record in which a mail message travels between the extensions and the
/// mail application. A plain value holder: nothing in it changes by itself.
///
/// Each property is atomic by itself and may be null. The lists are the record's own: what is
/// handed out is the list itself, not a copy, and whoever reads or changes one holds the record's
/// lock
/// (`synchronized`). Fields that come from dictionaries hold whatever stood there.
class ExtensionMessage final : public foundation::Object, public foundation::Monitor {
 public:
  using Text = foundation::Property<foundation::Value>;
  using Number = foundation::Property<foundation::Value>;
  using MutableList = foundation::Property<std::shared_ptr<foundation::List>>;

  Text subject;
  Text account;     ///< the account that the message belongs to, as the application names it
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
  MutableList to;           ///< of `ExtensionAddress`, or of anything that answers `mail`
  MutableList cc;
  MutableList bcc;
  Text toString;  ///< recipients as one text, when the message was read from a URL
  Text ccString;
  Text bccString;
  MutableList attachments;  ///< paths (texts) or file URLs

  /// The factory `new`: allocation followed by `init`. Bodies are empty texts, the four lists are
  /// empty and distinct, everything else is null.
  [[nodiscard]] static std::shared_ptr<ExtensionMessage> make();

  /// `ExtensionMessageWithUrl:`: a new record, filled from a command URL's query; never null.
  /// Recipients come back as joined texts, attachments as paths; unknown keys and the command word
  /// are ignored. Raises what parsing the query raises. A null URL gives a record with its
  /// defaults.
  [[nodiscard]] static std::shared_ptr<ExtensionMessage> ExtensionMessageWithUrl(
      const std::shared_ptr<foundation::NSURL>& url);

  /// `initWithDictonary:`: a record filled from a dictionary of the mail application. An absent
  /// subject is the translation of "No subject", other absent texts are empty, absent numbers 0; an
  /// absent date is the first of 1970. The date is reduced to single precision, `dateString` is
  /// made of it, and the Base64 text under "avatar" becomes the image. Nothing else is filled: the
  /// bodies and the lists stay null. A null dictionary reads as an empty one. A failing reading is
  /// logged and the record is answered as far as it was filled; never null.
  [[nodiscard]] static std::shared_ptr<ExtensionMessage> initWithDictonary(
      const foundation::Value& dictionary);

  /// `queryUrl:`: the command URL "quoll://COMMAND?QUERY" for this message; null when the text is
  /// not a URL. Takes the record's lock. Raises when a field is of a kind that no query can carry.
  [[nodiscard]] std::shared_ptr<foundation::NSURL> queryUrl(std::string_view command) const;

  /// `renderHtml`: the message as HTML. With an HTML body that is the body, each attachment behind
  /// it as a picture; else the plain body with its line feeds and links marked up. The result
  /// becomes the body that it was made of, so a second call starts from it. Nothing is escaped. A
  /// link that stands in the text again is marked up again, anchors inside anchors, which doubles
  /// the text each time: a replacement that would make it longer than 64 MiB, and those after it,
  /// are left out and the log says so in one line. Time grows with the lengths of the body and the
  /// result. Not for a record that another thread reads meanwhile; the attachments are read under
  /// the record's lock. Raises when a body is of another kind.
  std::string renderHtml();

  /// `searchUrlsDetector:`: the links in `text`, as absolute texts, in the order in which they
  /// occur, repeats too.
  [[nodiscard]] std::vector<std::string> searchUrlsDetector(std::string_view text) const;

  /// `isEqual:`: the same record, or one of this class for which `isEqualToModel:` answers true.
  [[nodiscard]] bool isEqual(const foundation::Object* other) const override;

  /// `isEqualToModel:`: the same record, or one with the same `messageId` and `account`. A null
  /// identifier or account on this record is equal to nothing.
  [[nodiscard]] bool isEqualToModel(const ExtensionMessage& other) const;

  [[nodiscard]] std::string_view class_name() const override { return "ExtensionMessage"; }
  /// "ExtensionMessage %@" with the subject.
  [[nodiscard]] std::string description() const override;

 private:
  void init();
};

}  // namespace quoll

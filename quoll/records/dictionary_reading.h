#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/exception.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"
#include "quoll/platform/bundle.h"
#include "quoll/platform/log.h"

/// Fills a record from a property-list dictionary. All records are read by these functions.
namespace quoll::records {

/// Makes the value of a field whose key is absent.
using Default = foundation::Value (*)();

/// One field of a record: its key in the dictionary, the member, and the default.
template <typename Record>
struct Field {
  std::string_view key;
  foundation::Property<foundation::Value> Record::*field;
  Default when_absent;
};

inline foundation::Value empty_text() {
  return "";
}

/// The default for the mail of an account or an alias.
inline foundation::Value translated_no_mail() {
  return platform::NSBundle::mainBundle()->localizedStringForKey("No Mail", "");
}

/// Fills the fields in order. Each gets the value under its key, of whatever kind, or its default
/// when there is none. A null dictionary counts as empty. Raises when `dictionary` is of another
/// kind.
template <typename Record, typename Fields>
void fill(Record& record, const foundation::Value& dictionary, const Fields& fields) {
  for (const Field<Record>& field : fields) {
    const foundation::Value value = dictionary.objectForKey(field.key);
    record.*field.field = value.is_null() ? field.when_absent() : value;
  }
}

/// Runs `reading` on a new record and answers that record. A platform exception ends the reading
/// and is logged as "CLASS initWithDictonary %@"; the record keeps what was filled until then. Any
/// other exception reaches the caller.
template <typename Record, typename Reading>
std::shared_ptr<Record> guarded(const std::shared_ptr<Record>& record, const Reading& reading) {
  try {
    reading(*record);
  } catch (const foundation::NSException& exception) {
    platform::log("%@ initWithDictonary %@", record->class_name(), exception);
  }
  return record;
}

}  // namespace quoll::records

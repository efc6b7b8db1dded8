#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/exception.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"
#include "quoll/platform/bundle.h"
#include "quoll/platform/log.h"

/// How every record is filled from a property-list dictionary.
namespace quoll::records {

/// What stands in a field whose key is absent.
using Default = foundation::Value (*)();

/// One field of a record: its key, its place and its default.
template <typename Record>
struct Field {
  std::string_view key;
  foundation::Property<foundation::Value> Record::*field;
  Default when_absent;
};

inline foundation::Value empty_text() {
  return "";
}

/// The mail of an account, or of an alias, that has none.
inline foundation::Value translated_no_mail() {
  return platform::NSBundle::mainBundle()->localizedStringForKey("No Mail", "");
}

/// Stores the value under each field's key as it comes, whatever its kind, and the default where
/// there is none, field by field in order. Raises when `dictionary` is not one.
template <typename Record, typename Fields>
void fill(Record& record, const foundation::Value& dictionary, const Fields& fields) {
  for (const Field<Record>& field : fields) {
    const foundation::Value value = dictionary.objectForKey(field.key);
    record.*field.field = value.is_null() ? field.when_absent() : value;
  }
}

/// Runs `reading` on a new record and answers that record. A platform exception is logged as
/// "CLASS initWithDictonary %@" and ends the reading; the record is answered as far as it was
/// filled. Whatever else is thrown passes through.
template <typename Record, typename Reading>
std::shared_ptr<Record> guarded(const std::shared_ptr<Record>& record, const Reading& reading) {
  try {
    reading(*record);
  } catch (const foundation::NSException& exception) {
    platform::log(std::string(record->class_name()) + " initWithDictonary %@", exception);
  }
  return record;
}

}  // namespace quoll::records

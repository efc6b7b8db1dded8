#include "apps/console/operations/read_value.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "apps/console/operations/described_context.h"
#include "apps/console/operations/record_classes.h"
#include "apps/console/operations/request_form.h"
#include "quoll/foundation/base64.h"
#include "quoll/foundation/collections.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/platform/files.h"
#include "quoll/platform/images.h"
#include "quoll/records/extension_date.h"

namespace quoll::console {

namespace {

using foundation::Bytes;
using foundation::Value;

Value read_url(const Json& content) {
  return foundation::NSURL::URLWithString(text_in(content, "$url"));
}

/// `{"$url": TEXT, "base": TEXT}`.
Value read_relative_url(const Json& json) {
  return foundation::NSURL::URLWithString(text_in(json["$url"], "$url"),
                                          read_url(json["base"]).as<foundation::NSURL>());
}

Value read_image(const Json& json) {
  require_object(json, "$image");
  if (json.size() != 1 || !json.contains("data")) {
    throw Refused("$image wants {\"data\": BASE64}");
  }
  return platform::NSImage::initWithData(bytes_in(json["data"], "$image"));
}

Value read_date(const Json& json) {
  if (!json.is_number()) {
    throw Refused("$date is not a number");
  }
  return foundation::Date{json.get<double>()};
}

Value read_shared_dates(const Json& json) {
  if (!json.is_null()) {
    throw Refused("$ExtensionDate stands for the shared instance and holds null");
  }
  return ExtensionDate::shared();
}

/// The forms that are read from their content alone.
struct Form {
  std::string_view key;
  Value (*read)(const Json& content);
};

constexpr std::array kForms{
    Form{"$data", [](const Json& json) -> Value { return bytes_in(json, "$data"); }},
    Form{"$date", read_date},
    Form{"$url", read_url},
    Form{"$file",
         [](const Json& json) -> Value {
           return platform::fileURLWithPath(text_in(json, "$file"));
         }},
    Form{"$image", read_image},
    Form{"$request", [](const Json& json) -> Value { return read_request(json); }},
    Form{"$ExtensionDate", read_shared_dates},
};

}  // namespace

Bytes bytes_in(const Json& json, std::string_view what) {
  auto bytes = foundation::base64_decode(text_in(json, what));
  if (!bytes) {
    throw Refused(std::string(what) + " is not Base64");
  }
  return std::move(*bytes);
}

void ValueReader::set_self(Value self) {
  self_ = std::move(self);
  has_self_ = true;
}

Value ValueReader::read(const Json& json) {
  switch (json.type()) {
    case Json::value_t::boolean:
      return json.get<bool>();
    case Json::value_t::number_integer:
      return json.get<std::int64_t>();
    case Json::value_t::number_float:
      return json.get<double>();
    case Json::value_t::string:
      return json.get_ref<const std::string&>();
    case Json::value_t::array: {
      foundation::List list;
      for (const Json& element : json) {
        list.addObject(read(element));
      }
      return list;
    }
    case Json::value_t::object:
      return read_object(json);
    default:
      return {};
  }
}

Value ValueReader::read_object(const Json& json) {
  const auto& entries = json.get_ref<const Json::object_t&>();
  const auto dollar = std::find_if(entries.begin(), entries.end(),
                                   [](const auto& entry) { return entry.first.starts_with('$'); });
  if (dollar == entries.end()) {
    return read_dictionary(json);
  }
  if (entries.size() == 2 && json.contains("$url") && json.contains("base")) {
    return read_relative_url(json);
  }
  if (entries.size() != 1) {
    throw Refused("an object with the key " + dollar->first + " is not usable");
  }
  return read_form(dollar->first, dollar->second);
}

Value ValueReader::read_form(const std::string& key, const Json& content) {
  const auto* known =
      std::find_if(kForms.begin(), kForms.end(), [&](const Form& one) { return one.key == key; });
  if (known != kForms.end()) {
    return known->read(content);
  }
  if (key == "$dict") {
    return read_dictionary(content);
  }
  if (key == "$self") {
    return read_self(content);
  }
  if (key == "$context") {
    return read_context(
        content, [this](const Json& json) { return read(json); }, timer_);
  }
  return read_record(key.substr(1), content);
}

Value ValueReader::read_dictionary(const Json& json) {
  require_object(json, "$dict");
  foundation::Dictionary dictionary;
  for (const auto& [key, value] : json.get_ref<const Json::object_t&>()) {
    dictionary.setObject(read(value), key);
  }
  return dictionary;
}

Value ValueReader::read_record(const std::string& class_name, const Json& fields) {
  const RecordClass* known = record_class(class_name);
  if (known == nullptr) {
    throw Refused("$" + class_name + " is not known");
  }
  require_object(fields, "$" + class_name);
  auto record = known->make();
  for (const auto& [name, value] : fields.get_ref<const Json::object_t&>()) {
    const RecordField* field = known->field(name);
    if (field == nullptr) {
      throw Refused(std::string(class_name).append(" has no field ").append(name));
    }
    field->set(*record, read(value));
  }
  return record;
}

Value ValueReader::read_self(const Json& json) {
  if (!has_self_ || !json.is_null()) {
    throw Refused("$self stands for the receiver in an argument and holds null");
  }
  used_self_ = true;
  return self_;
}

}  // namespace quoll::console

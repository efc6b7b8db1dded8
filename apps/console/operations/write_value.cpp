#include "apps/console/operations/write_value.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "apps/console/operations/record_classes.h"
#include "apps/console/operations/request_form.h"
#include "quoll/foundation/base64.h"
#include "quoll/foundation/collections.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/text.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/images.h"
#include "quoll/records/extension_date.h"

namespace quoll::console {

namespace {

using foundation::Value;

constexpr std::size_t kMaxDepth = 1024;

Json form(std::string_view key, Json value) {
  Json object = Json::object();
  append(object, std::string(key), std::move(value));
  return object;
}

Json write_url(const foundation::NSURL& url) {
  Json json = form("$url", json_text(url.relativeString()));
  if (url.baseURL()) {
    append(json, "base", json_text(url.baseURL()->absoluteString()));
  }
  return json;
}

class Writer {
 public:
  Json write(const Value& value) {
    if (const std::string* text = value.text()) {
      return json_text(*text);
    }
    if (const bool* boolean = value.boolean()) {
      return *boolean;
    }
    if (const std::int64_t* integer = value.integer()) {
      return *integer;
    }
    if (const double* real = value.real()) {
      return *real;
    }
    if (const foundation::Date* date = value.date()) {
      return form("$date", date->seconds_since_1970);
    }
    if (const foundation::Bytes* bytes = value.bytes()) {
      return form("$data", foundation::base64_encode(*bytes));
    }
    return write_shared(value);
  }

 private:
  /// Keeps an object or container on the path of those being written, from the outermost to the
  /// innermost, while it lives.
  class Step {
   public:
    Step(std::vector<const void*>& path, const void* thing) : path_(path) {
      if (path.size() == kMaxDepth) {
        throw Refused("the answer nests too deeply");
      }
      if (std::find(path.begin(), path.end(), thing) != path.end()) {
        throw Refused("the answer contains itself");
      }
      path.push_back(thing);
    }
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;
    ~Step() { path_.pop_back(); }

   private:
    std::vector<const void*>& path_;
  };

  Json write_shared(const Value& value) {
    if (const auto list = value.as<foundation::List>()) {
      const Step step(path_, list.identity());
      Json array = Json::array();
      for (const Value& element : list) {
        array.push_back(write(element));
      }
      return array;
    }
    if (const auto dictionary = value.as<foundation::Dictionary>()) {
      const Step step(path_, dictionary.identity());
      return write_dictionary(dictionary);
    }
    if (const auto object = value.object()) {
      const Step step(path_, object.get());
      return write_object(*object);
    }
    return nullptr;
  }

  Json write_dictionary(const foundation::Dictionary& dictionary) {
    Json object = Json::object();
    bool dollar = false;
    for (const foundation::Dictionary::Entry& entry : dictionary) {
      append(object, foundation::utf8_with_escapes(entry.key), write(entry.value));
      dollar = dollar || entry.key.starts_with('$');
    }
    return dollar ? form("$dict", std::move(object)) : object;
  }

  Json write_object(const foundation::Object& object) {
    if (const auto* url = dynamic_cast<const foundation::NSURL*>(&object)) {
      return write_url(*url);
    }
    if (const auto* request = dynamic_cast<const foundation::NSURLRequest*>(&object)) {
      return form("$request", write_request(*request));
    }
    if (const auto* image = dynamic_cast<const platform::NSImage*>(&object)) {
      return form(
          "$image",
          {{"width", image->width()}, {"height", image->height()}, {"flipped", image->flipped}});
    }
    if (dynamic_cast<const ExtensionDate*>(&object) != nullptr) {
      return form("$ExtensionDate", nullptr);
    }
    if (const RecordClass* known = record_class(object.class_name())) {
      return write_record(object, *known);
    }
    throw Refused("an answer cannot hold " + std::string(object.class_name()));
  }

  Json write_record(const foundation::Object& record, const RecordClass& known) {
    std::unique_lock<std::recursive_mutex> lock;
    if (const auto* message = dynamic_cast<const ExtensionMessage*>(&record)) {
      lock = message->synchronized();
    }
    Json fields = Json::object();
    for (const RecordField& field : known.fields) {
      append(fields, std::string(field.name), write(field.get(record)));
    }
    return form("$" + std::string(known.name), std::move(fields));
  }

  std::vector<const void*> path_;
};

}  // namespace

Json json_text(std::string_view text) {
  return foundation::utf8_with_escapes(text);
}

Json write_value(const Value& value) {
  return Writer().write(value);
}

}  // namespace quoll::console

#include "apps/console/message_file.h"

#include <iostream>
#include <iterator>
#include <optional>
#include <stdexcept>

#include "apps/console/operations/json.h"
#include "apps/console/operations/read_value.h"
#include "quoll/foundation/property_list.h"
#include "quoll/platform/files.h"

namespace quoll::console {

namespace {

using foundation::Value;

std::string contents_of(const std::string& file) {
  if (file == "-") {
    return {std::istreambuf_iterator<char>(std::cin), {}};
  }
  const auto contents = platform::NSFileManager::defaultManager()->contentsAtPath(file);
  if (const auto* const error = std::get_if<foundation::Error>(&contents)) {
    throw std::runtime_error(error->text);
  }
  const auto& bytes = std::get<foundation::Bytes>(contents);
  return {bytes.begin(), bytes.end()};
}

/// Reads a message from a JSON object of its fields, with or without `$ExtensionMessage` around
/// them.
Value read_json(const std::string& contents) {
  Json json = parse_json(contents);
  const bool is_bare = json.is_object() && (json.empty() || !json.begin().key().starts_with('$'));
  if (is_bare) {
    json = {{"$ExtensionMessage", std::move(json)}};
  }
  return ValueReader({}).read(json);
}

/// Reads a property list or JSON. One cannot be taken for the other: a JSON object is not a
/// property list of the old form, and the root of a property list is never null.
Value read(const std::string& contents) {
  const auto root = foundation::read_property_list(contents);
  return root ? *root : read_json(contents);
}

std::shared_ptr<ExtensionMessage> message_in(const std::string& contents) {
  const Value value = read(contents);
  if (value.as<foundation::Dictionary>()) {
    return ExtensionMessage::initWithDictonary(value);
  }
  auto message = value.as<ExtensionMessage>();
  if (!message) {
    throw std::runtime_error("it holds " + std::string(value.kind()) + " instead of a message");
  }
  return message;
}

}  // namespace

std::shared_ptr<ExtensionMessage> read_message(const std::string& file) {
  try {
    return message_in(contents_of(file));
  } catch (const std::runtime_error& failure) {
    throw std::runtime_error((file == "-" ? "standard input" : file) +
                             " gives no message: " + failure.what());
  }
}

}  // namespace quoll::console

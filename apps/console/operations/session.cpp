#include "apps/console/operations/session.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "apps/console/operations/constants.h"
#include "apps/console/operations/read_value.h"
#include "apps/console/operations/record_classes.h"
#include "apps/console/operations/write_event.h"
#include "apps/console/operations/write_value.h"
#include "quoll/foundation/exception.h"
#include "quoll/recording/event_recorder.h"
#include "quoll/recording/recording_ports.h"

namespace quoll::console {

using foundation::Value;
using Level = Operation::Level;

/// A request whose shape is right; pointers into its JSON.
struct Session::Request {
  std::string operation;
  std::string constant;
  std::optional<std::string> class_name;
  const Json* receiver = nullptr;
  const Json* arguments = nullptr;

  [[nodiscard]] std::size_t argument_count() const {
    return arguments == nullptr ? 0 : arguments->size();
  }
};

namespace {

/// A receiver that was given itself holds itself and would never be released.
class BrokenCycle {
 public:
  BrokenCycle(const ValueReader& reader, const Value& self) : reader_(reader), self_(self) {}
  BrokenCycle(const BrokenCycle&) = delete;
  BrokenCycle& operator=(const BrokenCycle&) = delete;
  ~BrokenCycle() {
    const auto object = self_.object();
    const RecordClass* known = object ? record_class(object->class_name()) : nullptr;
    if (reader_.used_self() && known != nullptr) {
      for (const RecordField& field : known->fields) {
        field.set(*object, Value());
      }
    }
  }

 private:
  const ValueReader& reader_;
  const Value& self_;
};

/// The class whose operations a value has.
std::string_view class_of(const Value& value) {
  const auto object = value.object();
  return object ? object->class_name() : value.text() != nullptr ? "NSString" : "";
}

/// Runs a step of an answer; what leaves it becomes the reply.
template <typename Step>
void guarded(Json& reply, const Step& step) {
  try {
    step();
  } catch (const foundation::NSException& exception) {
    reply = Json::object();
    reply["raised"] = exception.name();
    reply["reason"] = json_text(exception.reason());
  } catch (const std::exception& failure) {
    reply = Json::object();
    reply["refused"] = json_text(failure.what());
  }
}

}  // namespace

Session::Session(platform::Desktop desktop)
    : desktop_(std::move(desktop)), recorded_(recording::recorded(*platform::current_desktop())) {}

std::string Session::reply(std::string_view line) {
  const auto recorder = std::make_shared<recording::EventRecorder>();
  Json reply = Json::object();
  guarded(reply, [&] {
    const recording::EventRecorder::Scope scope(recorder);
    reply = answer(line);
  });
  Json events = Json::array();
  guarded(reply, [&] {
    for (const recording::Event& event : recorder->close()) {
      write_event(event, events);
    }
  });
  all_answered_ = all_answered_ && reply.contains("result");
  if (!events.empty()) {
    reply["events"] = std::move(events);
  }
  return json_line(reply);
}

Json Session::answer(std::string_view line) const {
  const Json json = parse_json(line);
  const Request request = read_request(json);
  if (request.constant.empty()) {
    return call(request);
  }
  const auto value = constant(request.constant);
  if (!value) {
    throw Refused("no constant " + request.constant);
  }
  return {{"result", write_value(*value)}};
}

Session::Request Session::read_request(const Json& json) {
  require_object(json, "a request");
  Request request;
  for (const auto& [key, value] : json.get_ref<const Json::object_t&>()) {
    if (key == "op") {
      request.operation = text_in(value, "op");
    } else if (key == "class") {
      request.class_name = text_in(value, "class");
    } else if (key == "constant") {
      request.constant = text_in(value, "constant");
    } else if (key == "on") {
      request.receiver = &value;
    } else if (key == "args" && value.is_array()) {
      request.arguments = &value;
    } else {
      throw Refused("a request's " + key + " is not usable");
    }
  }
  const bool operation = json.contains("op");
  if (operation == json.contains("constant")) {
    throw Refused("a request has either op or constant");
  }
  if (!operation && json.size() != 1) {
    throw Refused("a request for a constant has nothing else");
  }
  if (operation && request.class_name.has_value() == (request.receiver != nullptr)) {
    throw Refused("an operation has either class or on");
  }
  if (!operation && request.constant.empty()) {
    throw Refused("no constant without a name");
  }
  return request;
}

void Session::require_known(const Request& request) const {
  const Level level = request.class_name ? Level::kClass : Level::kInstance;
  auto found = table_.named(level, request.operation);
  if (request.class_name) {
    std::erase_if(found, [&](const Operation* one) { return one->owner != *request.class_name; });
  }
  if (found.empty()) {
    throw Refused("no operation " + request.operation +
                  (request.class_name ? " of class " + *request.class_name : ""));
  }
  // Every operation of one name takes the same number of arguments.
  const std::size_t wanted = found.front()->arguments;
  if (request.argument_count() != wanted) {
    throw Refused(request.operation + " takes " + std::to_string(wanted) + " arguments, not " +
                  std::to_string(request.argument_count()));
  }
}

const Operation& Session::find(const Request& request, const Value& self) const {
  const Level level = request.class_name ? Level::kClass : Level::kInstance;
  const std::string_view owner = request.class_name ? *request.class_name : class_of(self);
  for (const Operation* one : table_.named(level, request.operation)) {
    if (one->owner.empty() || one->owner == owner) {
      return *one;
    }
  }
  foundation::raise_invalid_argument(request.operation + " was asked of " +
                                     std::string(self.kind()));
}

Json Session::call(const Request& request) const {
  require_known(request);
  ValueReader reader(timer_);
  Call call;
  const BrokenCycle unlinked(reader, call.self);
  if (request.receiver != nullptr) {
    call.self = reader.read(*request.receiver);
    reader.set_self(call.self);
  }
  for (std::size_t i = 0; i < request.argument_count(); ++i) {
    call.arguments.push_back(reader.read((*request.arguments)[i]));
  }
  if (request.receiver != nullptr && call.self.is_null()) {
    return {{"result", nullptr}};
  }
  const Operation& operation = find(request, call.self);
  Json reply{{"result", write_value(operation.run(call))}};
  if (operation.changes_receiver) {
    reply["on"] = write_value(call.self);
  }
  if (call.seconds) {
    reply["seconds"] = *call.seconds;
  }
  return reply;
}

}  // namespace quoll::console

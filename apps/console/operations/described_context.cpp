#include "apps/console/operations/described_context.h"

#include <cstdint>
#include <string>
#include <utility>

#include "quoll/foundation/error.h"
#include "quoll/platform/desktop.h"
#include "quoll/platform/type_identifiers.h"
#include "quoll/recording/event_recorder.h"

namespace quoll::console {

namespace {

using foundation::Error;
using foundation::Value;
using platform::NSAttributedString;
using platform::NSExtensionItem;
using recording::EventRecorder;
using ReadValue = std::function<Value(const Json&)>;

class DescribedProvider final : public platform::NSItemProvider {
 public:
  std::string type;
  Value item;
  std::optional<Error> error;
  double after = 0;
  std::int64_t times = 1;
  std::weak_ptr<AnswerTimer> timer;

  [[nodiscard]] bool hasItemConformingToTypeIdentifier(std::string_view wanted) const override {
    return platform::type_conforms_to(type, wanted);
  }

  void loadItemForTypeIdentifier(std::string_view /*wanted*/, CompletionHandler handler) override {
    for (std::int64_t i = 0; i < times; ++i) {
      auto answer = [handler, held = item, failure = error] { handler(held, failure); };
      if (after <= 0) {
        platform::dispatch_async(platform::QueuePriority::kDefault, std::move(answer));
      } else if (const auto running = timer.lock()) {
        running->after(after, [recorder = EventRecorder::current(), answer = std::move(answer)] {
          const EventRecorder::Scope scope(recorder);
          platform::dispatch_async(platform::QueuePriority::kDefault, answer);
        });
      }
    }
  }
};

double number_in(const Json& json, std::string_view what) {
  if (!json.is_number()) {
    throw Refused(std::string(what) + " is not a number");
  }
  return json.get<double>();
}

std::shared_ptr<platform::NSItemProvider> read_provider(const Json& json, const ReadValue& read,
                                                        const std::weak_ptr<AnswerTimer>& timer) {
  require_object(json, "a provider");
  auto provider = std::make_shared<DescribedProvider>();
  provider->timer = timer;
  for (const auto& [key, value] : json.items()) {
    if (key == "type") {
      provider->type = text_in(value, "a provider's type");
    } else if (key == "item") {
      provider->item = read(value);
    } else if (key == "error") {
      provider->error = Error{.domain = std::string(foundation::NSCocoaErrorDomain),
                              .code = foundation::NSFileReadUnknownError,
                              .text = text_in(value, "a provider's error"),
                              .user_info = {}};
    } else if (key == "after") {
      provider->after = number_in(value, "a provider's after");
    } else if (key == "times" && value.is_number_integer()) {
      provider->times = value.get<std::int64_t>();
    } else {
      throw Refused("a provider's " + key + " is not usable");
    }
  }
  if (provider->type.empty()) {
    throw Refused("a provider has no type");
  }
  return provider;
}

std::shared_ptr<NSAttributedString> read_styled_text(const Json& json) {
  if (json.is_null()) {
    return nullptr;
  }
  if (!json.is_object()) {
    return std::make_shared<NSAttributedString>(
        std::string_view(text_in(json, "an input item's text")));
  }
  if (json.size() != 1 || !json.contains("html")) {
    throw Refused("an input item's text is neither a text nor {\"html\": TEXT}");
  }
  auto styled = platform::current_desktop()->styled_text->from_html(text_in(json["html"], "html"));
  if (!styled) {
    throw Refused("an input item's html cannot be read");
  }
  return styled;
}

std::shared_ptr<NSExtensionItem> read_item(const Json& json, const ReadValue& read,
                                           const std::weak_ptr<AnswerTimer>& timer) {
  require_object(json, "an input item");
  auto item = std::make_shared<NSExtensionItem>();
  for (const auto& [key, value] : json.items()) {
    if (key == "text") {
      item->attributedContentText = read_styled_text(value);
    } else if (key == "title") {
      item->attributedTitle = read_styled_text(value);
    } else if (key == "attachments" && value.is_array()) {
      NSExtensionItem::Attachments attachments;
      for (const Json& provider : value) {
        attachments.push_back(read_provider(provider, read, timer));
      }
      item->attachments = std::move(attachments);
    } else {
      throw Refused("an input item's " + key + " is not usable");
    }
  }
  return item;
}

}  // namespace

std::shared_ptr<DescribedContext> read_context(const Json& json, const ReadValue& read,
                                               const std::weak_ptr<AnswerTimer>& timer) {
  require_object(json, "a context");
  platform::NSExtensionContext::Items items;
  for (const auto& [key, value] : json.items()) {
    if (key != "inputItems" || !value.is_array()) {
      throw Refused("a context's " + key + " is not usable");
    }
    for (const Json& item : value) {
      items.push_back(read_item(item, read, timer));
    }
  }
  return std::make_shared<DescribedContext>(std::move(items));
}

}  // namespace quoll::console

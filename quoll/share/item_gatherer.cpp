#include "quoll/share/item_gatherer.h"

#include <atomic>
#include <cstdint>
#include <utility>

#include "quoll/container/staging.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/format.h"
#include "quoll/platform/clock.h"
#include "quoll/platform/files.h"
#include "quoll/platform/images.h"
#include "quoll/platform/log.h"
#include "quoll/platform/queue.h"
#include "quoll/platform/type_identifiers.h"

namespace quoll::ExtensionUtilities {

namespace {

using foundation::Bytes;
using foundation::Error;
using foundation::List;
using foundation::NSURL;
using foundation::Value;
using platform::NSExtensionContext;
using platform::NSExtensionItem;
using platform::NSItemProvider;

/// What the gathering block and the load handlers of one share have in common.
struct Gathering {
  std::string service;
  std::shared_ptr<ExtensionMessage> message;
  /// Attachments that have not answered. One that is neither a link nor an image is never asked and
  /// counts until the end.
  std::atomic<std::int64_t> pending = 0;
};

/// Lowers the pending counter when a handler ends, however it ends.
class Answer {
 public:
  explicit Answer(Gathering& gathering) : gathering_(gathering) {}
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;
  ~Answer() { gathering_.pending.fetch_sub(1, std::memory_order_release); }

 private:
  Gathering& gathering_;
};

void append_html(ExtensionMessage& message, const std::string& html) {
  const auto lock = message.synchronized();
  message.htmlBody.change([&](Value& body) { body.append_text(html); });
}

void append_attachments(ExtensionMessage& message, const List& paths) {
  const auto lock = message.synchronized();
  auto attachments = message.attachments();
  if (!attachments) {
    return;  // the completion may have taken the list away before a late answer
  }
  for (const Value& path : paths) {
    attachments.addObject(path);
  }
}

void append_text(ExtensionMessage& message, const NSExtensionItem& item) {
  const auto text = item.attributedContentText();
  if (!text || text->length() == 0) {
    return;
  }
  const auto document = text->html_document();
  const auto html =
      document ? std::optional<std::string>({document->begin(), document->end()}) : std::nullopt;
  append_html(message, foundation::format("%@<br/>", html));
}

void add_link(ExtensionMessage& message, const NSExtensionItem& item, const Value& link) {
  const auto title = item.attributedTitle();
  const auto lock = message.synchronized();
  message.subject = title ? Value(title->string()) : Value();
  append_html(message, foundation::format("<a href=\"%@\">%@</a>", link, link));
}

void url_loaded(Gathering& gathering, const NSExtensionItem& input, const Value& item,
                const std::optional<Error>& error) {
  const Answer answer(gathering);
  if (error) {
    platform::log("GetItemForExtension kUTTypeURL %@", *error);
    return;
  }
  const auto url = item.as<NSURL>();
  if (!url && !item.is_null()) {
    foundation::raise_invalid_argument("isFileURL was asked of " + std::string(item.kind()));
  }
  if (url && url->isFileURL()) {
    const auto path = foundation::file_system_path(url);
    const auto staged = ShareFiles(gathering.service, List{path ? Value(*path) : Value()});
    append_attachments(*gathering.message, staged);
  } else {
    add_link(*gathering.message, input, item);
  }
}

constexpr std::string_view kImageFailure = "GetItemForExtension kUTTypeImage %@";

void log_no_image(std::string_view found) {
  platform::log_reason("GetItemForExtension kUTTypeImage",
                       foundation::quoll_error(foundation::kNotAnImageError,
                                               foundation::format("not an image: %@", found)));
}

/// The bytes of an image file, from an image object, from bytes or from a file; none, and the log
/// says why, when the item holds none.
std::optional<Bytes> image_bytes(const Value& item) {
  if (const auto image = item.as<platform::NSImage>()) {
    return image->TIFFRepresentation();
  }
  if (const Bytes* bytes = item.bytes()) {
    return *bytes;
  }
  const auto url = item.as<NSURL>();
  if (!url || !url->isFileURL()) {
    log_no_image(item.kind());
    return std::nullopt;
  }
  auto contents = platform::NSFileManager::defaultManager()->contentsAtPath(
      foundation::file_system_path(url).value_or(""));
  if (const auto* const error = std::get_if<Error>(&contents)) {
    platform::log(kImageFailure, *error);
    return std::nullopt;
  }
  return std::get<Bytes>(std::move(contents));
}

void image_loaded(Gathering& gathering, const Value& item, const std::optional<Error>& error) {
  const Answer answer(gathering);
  if (error) {
    platform::log(kImageFailure, *error);
    return;
  }
  auto bytes = image_bytes(item);
  if (bytes && bytes->empty()) {
    log_no_image("no bytes");
  }
  const auto image = platform::NSBitmapImageRep::imageRepWithData(std::move(bytes));
  auto png =
      image
          ? image->representationUsingType(platform::BitmapImageFileType::NSBitmapImageFileTypePNG)
          : std::nullopt;
  if (png) {
    append_attachments(*gathering.message, ShareDatas(gathering.service, List{std::move(*png)}));
  }
}

void load_attachment(const std::shared_ptr<Gathering>& gathering,
                     const std::shared_ptr<NSExtensionItem>& input, NSItemProvider& provider) {
  if (provider.hasItemConformingToTypeIdentifier(platform::kUTTypeURL)) {
    provider.loadItemForTypeIdentifier(
        platform::kUTTypeURL,
        [gathering, input](const Value& item, const std::optional<Error>& error) {
          url_loaded(*gathering, *input, item, error);
        });
  } else if (provider.hasItemConformingToTypeIdentifier(platform::kUTTypeImage)) {
    provider.loadItemForTypeIdentifier(
        platform::kUTTypeImage, [gathering](const Value& item, const std::optional<Error>& error) {
          image_loaded(*gathering, item, error);
        });
  }
  // An item that is neither is never asked and stays in the counter, so its share waits the full
  // time.
}

void wait_for_answers(const Gathering& gathering) {
  // 0.1 in single precision, as the interval was always given.
  constexpr double kInterval = 0.1F;
  int attempt = -100;
  while (true) {
    platform::sleep_for_time_interval(kInterval);
    if (attempt == 0) {
      return;
    }
    const std::int64_t pending = gathering.pending.load(std::memory_order_acquire);
    ++attempt;
    if (pending == 0) {
      return;
    }
  }
}

void gather(const std::shared_ptr<NSExtensionContext>& context, std::string service,
            const GatheringCompletion& completion) {
  const auto gathering = std::make_shared<Gathering>();
  gathering->service = std::move(service);
  const auto items = context ? context->inputItems() : NSExtensionContext::Items();
  for (const auto& item : items) {
    gathering->pending += static_cast<std::int64_t>(item->attachments().size());
  }
  gathering->message = ExtensionMessage::make();
  for (const auto& item : items) {
    append_text(*gathering->message, *item);
    for (const auto& provider : item->attachments()) {
      load_attachment(gathering, item, *provider);
    }
  }
  wait_for_answers(*gathering);
  completion(gathering->message, std::nullopt);
}

}  // namespace

void GetItemForExtension(std::shared_ptr<NSExtensionContext> context, std::string service,
                         GatheringCompletion completion) {
  platform::dispatch_async(
      platform::QueuePriority::kBackground,
      [context = std::move(context), service = std::move(service),
       completion = std::move(completion)] { gather(context, service, completion); });
}

}  // namespace quoll::ExtensionUtilities

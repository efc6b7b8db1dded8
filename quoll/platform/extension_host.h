#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/foundation/error.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/polymorphic.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"
#include "quoll/platform/styled_text.h"

namespace quoll::platform {

/// One shared thing that can be asked for its contents. Held by `std::shared_ptr`; any thread may
/// ask.
class NSItemProvider : public foundation::Polymorphic {
 public:
  /// Receives the item (a URL, an image object, bytes, or null), or the error for which there is
  /// none. It may run on any thread, at the same time as other handlers, and before the load call
  /// has returned.
  using CompletionHandler =
      std::function<void(foundation::Value item, const std::optional<foundation::Error>& error)>;

  /// `hasItemConformingToTypeIdentifier:`: see `type_conforms_to`.
  [[nodiscard]] virtual bool hasItemConformingToTypeIdentifier(std::string_view type) const = 0;

  /// `loadItemForTypeIdentifier:options:completionHandler:` without options: calls the handler when
  /// the item is there or cannot be had.
  virtual void loadItemForTypeIdentifier(std::string_view type, CompletionHandler handler) = 0;
};

/// What the host shares as one item. The host fills it before it hands it over; nobody changes it
/// afterwards. A title or text that was never set is null; no attachment is null.
class NSExtensionItem final : public foundation::Object {
 public:
  using Attachments = std::vector<std::shared_ptr<NSItemProvider>>;

  foundation::Property<std::shared_ptr<NSAttributedString>> attributedTitle;
  foundation::Property<std::shared_ptr<NSAttributedString>> attributedContentText;
  foundation::Property<Attachments> attachments;

  [[nodiscard]] std::string_view class_name() const override { return "NSExtensionItem"; }
  [[nodiscard]] std::string description() const override { return "NSExtensionItem"; }
};

/// The share request as the host sees it. The cancel and complete calls come from the thread that
/// asked for the view. A host that wants to know how a request ends overrides them.
class NSExtensionContext : public foundation::Polymorphic {
 public:
  using Items = std::vector<std::shared_ptr<NSExtensionItem>>;

  explicit NSExtensionContext(Items items = {}) : items_(std::move(items)) {}

  /// What is shared. No item in it is null.
  [[nodiscard]] virtual Items inputItems() const { return items_; }
  /// `completeRequestReturningItems:completionHandler:`; the handler may be null. Here it is told
  /// at once that the request has not expired.
  virtual void completeRequestReturningItems(const Items& /*items*/,
                                             const std::function<void(bool expired)>& handler) {
    if (handler) {
      handler(false);
    }
  }
  /// `cancelRequestWithError:`.
  virtual void cancelRequestWithError(const foundation::Error& /*error*/) {}

 private:
  Items items_;
};

}  // namespace quoll::platform

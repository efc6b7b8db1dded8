#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "quoll/foundation/error.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/value.h"
#include "quoll/platform/styled_text.h"

namespace quoll::platform {

/// One shared thing that can be asked for its contents. Held by `std::shared_ptr`; any thread may
/// ask.
class NSItemProvider {
 public:
  /// Receives the item (a URL, an image object, bytes, or null), or the error for which there is
  /// none. It may run on any thread, at the same time as other handlers, and before the load call
  /// has returned.
  using CompletionHandler =
      std::function<void(foundation::Value item, const std::optional<foundation::Error>& error)>;

  NSItemProvider() = default;
  NSItemProvider(const NSItemProvider&) = delete;
  NSItemProvider& operator=(const NSItemProvider&) = delete;
  virtual ~NSItemProvider() = default;

  /// `hasItemConformingToTypeIdentifier:`: see `type_conforms_to`.
  [[nodiscard]] virtual bool hasItemConformingToTypeIdentifier(std::string_view type) const = 0;

  /// `loadItemForTypeIdentifier:options:completionHandler:` without options: calls the handler when
  /// the item is there or cannot be had.
  virtual void loadItemForTypeIdentifier(std::string_view type, CompletionHandler handler) = 0;
};

/// What the host shares as one item. The host fills it before it hands it over; nobody changes it
/// afterwards. Each pointer may be null.
class NSExtensionItem final : public foundation::Object {
 public:
  std::shared_ptr<NSAttributedString> attributedTitle;
  std::shared_ptr<NSAttributedString> attributedContentText;
  std::vector<std::shared_ptr<NSItemProvider>> attachments;

  [[nodiscard]] std::string_view class_name() const override { return "NSExtensionItem"; }
  [[nodiscard]] std::string description() const override { return "NSExtensionItem"; }
};

/// The share request as the host sees it. The cancel and complete calls come from the thread that
/// asked for the view.
class NSExtensionContext {
 public:
  using Items = std::vector<std::shared_ptr<NSExtensionItem>>;

  NSExtensionContext() = default;
  NSExtensionContext(const NSExtensionContext&) = delete;
  NSExtensionContext& operator=(const NSExtensionContext&) = delete;
  virtual ~NSExtensionContext() = default;

  /// What is shared. No item in it is null.
  [[nodiscard]] virtual Items inputItems() const = 0;
  /// `completeRequestReturningItems:completionHandler:`; the handler may be null.
  virtual void completeRequestReturningItems(const Items& items,
                                             std::function<void(bool expired)> handler) = 0;
  /// `cancelRequestWithError:`.
  virtual void cancelRequestWithError(const foundation::Error& error) = 0;
};

}  // namespace quoll::platform

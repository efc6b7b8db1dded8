#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "apps/console/operations/answer_timer.h"
#include "apps/console/operations/json.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/value.h"
#include "quoll/platform/extension_host.h"

namespace quoll::console {

/// An extension context that is made from a description in JSON. It has only input items: what the
/// extension tells its host is ignored.
class DescribedContext final : public foundation::Object, public platform::NSExtensionContext {
 public:
  using NSExtensionContext::NSExtensionContext;

  [[nodiscard]] std::string_view class_name() const override { return "NSExtensionContext"; }
  [[nodiscard]] std::string description() const override { return "NSExtensionContext"; }
};

/// Reads the description. `read` reads the items that providers answer. Providers that answer late
/// wait by `timer`; when it has ended, they do not answer any more.
[[nodiscard]] std::shared_ptr<DescribedContext> read_context(
    const Json& json, const std::function<foundation::Value(const Json&)>& read,
    const std::weak_ptr<AnswerTimer>& timer);

}  // namespace quoll::console

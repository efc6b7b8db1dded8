#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "apps/console/operations/answer_timer.h"
#include "apps/console/operations/json.h"
#include "quoll/foundation/value.h"

namespace quoll::console {

/// The bytes of a Base64 text. Throws `Refused` for anything else; `what` names the value in the
/// reason.
[[nodiscard]] foundation::Bytes bytes_in(const Json& json, std::string_view what);

/// Reads the values of one request. Throws `Refused` for JSON that stands for no value. A null
/// inside a list or a dictionary raises, as storing it does.
class ValueReader final {
 public:
  explicit ValueReader(std::weak_ptr<AnswerTimer> timer) : timer_(std::move(timer)) {}

  [[nodiscard]] foundation::Value read(const Json& json);

  /// Sets the receiver, which `{"$self": null}` stands for from now on.
  void set_self(foundation::Value self);
  /// True when `$self` was read.
  [[nodiscard]] bool used_self() const { return used_self_; }

 private:
  [[nodiscard]] foundation::Value read_object(const Json& json);
  [[nodiscard]] foundation::Value read_form(const std::string& key, const Json& content);
  [[nodiscard]] foundation::Value read_dictionary(const Json& json);
  [[nodiscard]] foundation::Value read_record(const std::string& class_name, const Json& fields);
  [[nodiscard]] foundation::Value read_self(const Json& json);

  std::weak_ptr<AnswerTimer> timer_;
  foundation::Value self_;
  bool has_self_ = false;
  bool used_self_ = false;
};

}  // namespace quoll::console

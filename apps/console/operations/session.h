#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "apps/console/operations/answer_timer.h"
#include "apps/console/operations/json.h"
#include "apps/console/operations/operation_table.h"
#include "quoll/platform/desktop.h"

namespace quoll::console {

/// The operation console: one JSON request a line, one JSON reply a line.
///
/// It installs its desktop as long as it lives, so a process has one session at a time, and one
/// thread uses it.
class Session final {
 public:
  /// What is null in `desktop` is answered by the desktop that has nothing.
  explicit Session(platform::Desktop desktop);

  /// The reply to one line, without a line break. Nothing in a line makes it throw.
  [[nodiscard]] std::string reply(std::string_view line);

  /// True as long as every reply was a result.
  [[nodiscard]] bool all_answered() const { return all_answered_; }

 private:
  struct Request;

  [[nodiscard]] Json answer(std::string_view line) const;
  [[nodiscard]] Json call(const Request& request) const;
  [[nodiscard]] static Request read_request(const Json& json);
  [[nodiscard]] const Operation& find(const Request& request, const foundation::Value& self) const;
  void require_known(const Request& request) const;

  platform::ScopedDesktop desktop_;
  platform::ScopedDesktop recorded_;
  OperationTable table_;
  std::shared_ptr<AnswerTimer> timer_ = std::make_shared<AnswerTimer>();
  bool all_answered_ = true;
};

}  // namespace quoll::console

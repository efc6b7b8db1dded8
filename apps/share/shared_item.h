#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "apps/share/serial_queue.h"
#include "quoll/foundation/value.h"
#include "quoll/platform/extension_host.h"
#include "quoll/recording/event_recorder.h"

namespace quoll::share {

/// One item of a share, as the extension asks for it: a file or a link (an `NSURL`), or the bytes
/// of an image. Items with one queue answer in the order in which they were asked, each when the
/// extension is done with the one before, so that what they become stands in that order. Each
/// records what happens while the extension works on it. Held by `std::shared_ptr`; any thread may
/// call.
class SharedItem final : public platform::NSItemProvider,
                         public std::enable_shared_from_this<SharedItem> {
 public:
  enum class State { kNotAsked, kAsked, kAnswering, kAnswered };

  /// `given` is the item's name for the report: what the user wrote, if anything.
  SharedItem(std::string given, std::string_view type, foundation::Value value,
             std::shared_ptr<SerialQueue> answers = std::make_shared<SerialQueue>())
      : given_(std::move(given)),
        type_(type),
        value_(std::move(value)),
        answers_(std::move(answers)) {}

  [[nodiscard]] bool hasItemConformingToTypeIdentifier(std::string_view type) const override;
  void loadItemForTypeIdentifier(std::string_view type, CompletionHandler handler) override;

  [[nodiscard]] const std::string& given() const { return given_; }
  [[nodiscard]] const std::string& type() const { return type_; }
  [[nodiscard]] const foundation::Value& value() const { return value_; }

  /// True for a folder, which has to become a file before it is asked.
  [[nodiscard]] bool is_folder() const {
    const auto* const url = value_.as<foundation::NSURL>().get();
    return url != nullptr && url->isFileURL() && url->absoluteString().ends_with('/');
  }

  /// From now on the item is this, under the same name. To be called before it is asked.
  void answer_with(foundation::Value value) { value_ = std::move(value); }

  [[nodiscard]] State state() const { return state_; }
  /// The size of the file that was staged for it; 0 when none was.
  [[nodiscard]] std::uint64_t bytes() const { return bytes_; }
  /// What was logged and written while the extension worked on the item.
  [[nodiscard]] std::vector<recording::Event> events() const { return recorder_->events(); }

 private:
  void answer(const CompletionHandler& handler);

  std::string given_;
  std::string type_;
  foundation::Value value_;
  std::shared_ptr<SerialQueue> answers_;
  std::atomic<State> state_ = State::kNotAsked;
  std::atomic<std::uint64_t> bytes_ = 0;
  std::shared_ptr<recording::EventRecorder> recorder_ =
      std::make_shared<recording::EventRecorder>();
};

}  // namespace quoll::share

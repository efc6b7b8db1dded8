#pragma once

#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "quoll/platform/desktop.h"
#include "quoll/platform/extension_host.h"
#include "quoll/platform/type_identifiers.h"
#include "tests/support/recorders.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {

/// What happened during a share, in order.
class Events {
 public:
  void add(std::string event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }
  [[nodiscard]] std::vector<std::string> all() const {
    const std::lock_guard lock(mutex_);
    return events_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> events_;
};

/// An item provider that does what the test says when it is asked to load.
class ScriptedProvider final : public platform::NSItemProvider {
 public:
  using Load = std::function<void(const CompletionHandler&)>;

  ScriptedProvider(std::string type, Load load, Events* events = nullptr)
      : type_(std::move(type)), load_(std::move(load)), events_(events) {}

  [[nodiscard]] bool hasItemConformingToTypeIdentifier(std::string_view type) const override {
    return platform::type_conforms_to(type_, type);
  }
  void loadItemForTypeIdentifier(std::string_view type, CompletionHandler handler) override {
    if (events_ != nullptr) {
      events_->add("load " + std::string(type));
    }
    load_(handler);
  }

 private:
  std::string type_;
  Load load_;
  Events* events_;
};

/// A provider that answers at once with this item.
inline std::shared_ptr<platform::NSItemProvider> provider(std::string type,
                                                          foundation::Value item) {
  return std::make_shared<ScriptedProvider>(
      std::move(type), [item = std::move(item)](const auto& handler) { handler(item, {}); });
}

/// The request as a test's host gives it.
class ScriptedContext final : public platform::NSExtensionContext {
 public:
  explicit ScriptedContext(Items items = {}, Events* events = nullptr)
      : items_(std::move(items)), events_(events) {}

  [[nodiscard]] Items inputItems() const override { return items_; }
  void completeRequestReturningItems(const Items& items,
                                     const std::function<void(bool)>& handler) override {
    completed.push_back(items);
    handler_given = handler != nullptr;
  }
  void cancelRequestWithError(const foundation::Error& error) override {
    cancelled.push_back(error);
    if (at_cancel) {
      at_cancel();
    }
    if (events_ != nullptr) {
      events_->add("cancel");
    }
  }

  std::vector<Items> completed;
  std::vector<foundation::Error> cancelled;
  std::function<void()> at_cancel;
  bool handler_given = false;

 private:
  Items items_;
  Events* events_;
};

inline std::shared_ptr<platform::NSExtensionItem> item(
    std::vector<std::shared_ptr<platform::NSItemProvider>> attachments,
    const std::optional<std::string>& title = std::nullopt,
    const std::optional<std::string>& text = std::nullopt) {
  auto made = std::make_shared<platform::NSExtensionItem>();
  made->attachments = std::move(attachments);
  if (title) {
    made->attributedTitle = std::make_shared<platform::NSAttributedString>(*title);
  }
  if (text) {
    made->attributedContentText = std::make_shared<platform::NSAttributedString>(*text);
  }
  return made;
}

/// "Images" whose files are texts: "PNG of X" for the bytes X, and nothing for "broken".
class TextImages final : public platform::Images {
 public:
  std::optional<Size> size(const foundation::Bytes& file) override {
    return is_broken(file) ? std::nullopt : std::optional<Size>(Size{1, 1});
  }
  std::optional<foundation::Bytes> convert(const foundation::Bytes& file,
                                           platform::BitmapImageFileType type) override {
    if (is_broken(file)) {
      return std::nullopt;
    }
    const std::string name =
        type == platform::BitmapImageFileType::NSBitmapImageFileTypePNG ? "PNG of " : "TIFF of ";
    foundation::Bytes out(name.begin(), name.end());
    out.insert(out.end(), file.begin(), file.end());
    return out;
  }

 private:
  static bool is_broken(const foundation::Bytes& file) {
    return std::string(file.begin(), file.end()) == "broken";
  }
};

/// Styled text whose document is "<doc>TEXT</doc>"; none for the text "refused".
class PlainDocuments final : public platform::StyledText {
 public:
  std::shared_ptr<platform::NSAttributedString> from_html(std::string_view html) override {
    return std::make_shared<platform::NSAttributedString>(html);
  }
  std::optional<foundation::Bytes> to_html(const platform::NSAttributedString& text) override {
    if (text.string() == "refused") {
      return std::nullopt;
    }
    const std::string document = "<doc>" + text.string() + "</doc>";
    return foundation::Bytes(document.begin(), document.end());
  }
};

inline foundation::Bytes bytes_of(std::string_view text) {
  return {text.begin(), text.end()};
}

/// A desktop with a real container in a temporary folder and with time under the test's control.
class ShareTest {
 public:
  explicit ShareTest(std::function<void(int)> at_sleep = nullptr)
      : clock(std::make_shared<HeldClock>(std::move(at_sleep))) {
    setenv("QUOLL_GROUP_CONTAINERS", folder.path().c_str(), 1);
    scoped.emplace(
        platform::Desktop{.bundle = std::make_shared<FixedBundle>("it.vorlent.quoll2.Quoll-Share"),
                          .files = posix::make_file_manager(),
                          .coordinator = posix::coordinator_factory(),
                          .workspace = workspace,
                          .notifications = nullptr,
                          .log = log,
                          .queue = queue,
                          .clock = clock,
                          .images = std::make_shared<TextImages>(),
                          .styled_text = std::make_shared<PlainDocuments>()});
  }
  ShareTest(const ShareTest&) = delete;
  ShareTest& operator=(const ShareTest&) = delete;
  ~ShareTest() {
    queue->wait();
    scoped.reset();
    unsetenv("QUOLL_GROUP_CONTAINERS");
  }

  [[nodiscard]] std::string staging() const {
    return folder.path("K7Q2M9XT4B.quoll/SharedData/Share");
  }

  TemporaryFolder folder;
  std::shared_ptr<RecordingWorkspace> workspace = std::make_shared<RecordingWorkspace>();
  std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
  std::shared_ptr<ThreadQueue> queue = std::make_shared<ThreadQueue>();
  std::shared_ptr<HeldClock> clock;
  std::optional<platform::ScopedDesktop> scoped;
};

}  // namespace quoll::test

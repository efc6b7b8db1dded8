#include "apps/share/run.h"

#include <unistd.h>

#include <algorithm>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/platform/desktop.h"

namespace quoll::share {

namespace {

using platform::NSAttributedString;

/// Has the input items only: how the extension ends its request is ignored.
class ShareContext final : public platform::NSExtensionContext {
 public:
  explicit ShareContext(Items items) : items_(std::move(items)) {}

  [[nodiscard]] Items inputItems() const override { return items_; }
  void completeRequestReturningItems(const Items& /*items*/,
                                     std::function<void(bool expired)> handler) override {
    if (handler) {
      handler(false);
    }
  }
  void cancelRequestWithError(const foundation::Error& /*error*/) override {}

 private:
  Items items_;
};

std::shared_ptr<NSAttributedString> content_text(Selection& selection) {
  if (selection.text) {
    return std::make_shared<NSAttributedString>(std::string_view(*selection.text));
  }
  if (!selection.html) {
    return nullptr;
  }
  auto text = platform::current_desktop()->styled_text->from_html(*selection.html);
  if (!text) {
    selection.html.reset();
    selection.left_out.push_back({"the HTML text", "it cannot be read as HTML"});
  }
  return text;
}

std::size_t count_answered(const Selection& selection) {
  return static_cast<std::size_t>(std::count_if(
      selection.items.begin(), selection.items.end(),
      [](const auto& item) { return item->state() == SharedItem::State::kAnswered; }));
}

void show_at_terminal(std::size_t answered, std::size_t items) {
  static_cast<void>(posix::write_all(
      STDERR_FILENO, "\r" + std::to_string(answered) + " of " + std::to_string(items) + " items"));
}

}  // namespace

std::shared_ptr<platform::NSExtensionContext> make_context(Selection& selection) {
  auto item = std::make_shared<platform::NSExtensionItem>();
  if (selection.title) {
    item->attributedTitle =
        std::make_shared<NSAttributedString>(std::string_view(*selection.title));
  }
  item->attributedContentText = content_text(selection);
  item->attachments.assign(selection.items.begin(), selection.items.end());
  return std::make_shared<ShareContext>(ShareContext::Items{std::move(item)});
}

void wait_until_done(const Selection& selection, CountingQueue& background,
                     const Progress& progress) {
  constexpr std::chrono::milliseconds kDelay{1000};
  constexpr std::chrono::milliseconds kStep{100};
  if (background.wait_for_background(progress ? kStep : kDelay)) {
    return;
  }
  const bool is_terminal = isatty(STDERR_FILENO) == 1 && !selection.items.empty();
  const Progress& told = progress || !is_terminal ? progress : show_at_terminal;
  do {
    if (told) {
      told(count_answered(selection), selection.items.size());
    }
  } while (!background.wait_for_background(kStep));
  if (!progress && is_terminal) {
    static_cast<void>(posix::write_all(STDERR_FILENO, "\r\033[K"));
  }
}

}  // namespace quoll::share

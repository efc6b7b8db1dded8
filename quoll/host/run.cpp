#include "quoll/host/run.h"

#include <unistd.h>

#include <algorithm>

#include "quoll/host/file_handle.h"
#include "quoll/platform/desktop.h"

namespace quoll::host {

namespace {

using platform::NSAttributedString;

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

void show_progress(const Selection& selection) {
  const auto answered =
      std::count_if(selection.items.begin(), selection.items.end(),
                    [](const auto& item) { return item->state() == SharedItem::State::kAnswered; });
  static_cast<void>(write_all(STDERR_FILENO, "\r" + std::to_string(answered) + " of " +
                                                 std::to_string(selection.items.size()) +
                                                 " items"));
}

}  // namespace

std::shared_ptr<HostContext> make_request(Selection& selection) {
  auto item = std::make_shared<platform::NSExtensionItem>();
  if (selection.title) {
    item->attributedTitle =
        std::make_shared<NSAttributedString>(std::string_view(*selection.title));
  }
  item->attributedContentText = content_text(selection);
  item->attachments.assign(selection.items.begin(), selection.items.end());
  return std::make_shared<HostContext>(HostContext::Items{std::move(item)});
}

void wait_until_done(const Selection& selection, WatchedQueue& background) {
  constexpr std::chrono::milliseconds kPatience{1000};
  constexpr std::chrono::milliseconds kStep{100};
  if (background.wait_for_background(kPatience)) {
    return;
  }
  const bool is_shown = isatty(STDERR_FILENO) == 1 && !selection.items.empty();
  do {
    if (is_shown) {
      show_progress(selection);
    }
  } while (!background.wait_for_background(kStep));
  if (is_shown) {
    static_cast<void>(write_all(STDERR_FILENO, "\r\033[K"));
  }
}

}  // namespace quoll::host

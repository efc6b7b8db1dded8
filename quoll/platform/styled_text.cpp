#include "quoll/platform/styled_text.h"

#include "quoll/platform/desktop.h"

namespace quoll::platform {

NSAttributedString::NSAttributedString(std::vector<TextRun> runs) : runs_(std::move(runs)) {
  for (const TextRun& run : runs_) {
    text_ += run.text;
  }
}

NSAttributedString::NSAttributedString(std::string_view text) : text_(text) {
  if (!text.empty()) {
    runs_.push_back({text_, {}});
  }
}

std::optional<foundation::Bytes> NSAttributedString::html_document() const {
  return current_desktop()->styled_text->to_html(*this);
}

bool NSAttributedString::isEqual(const foundation::Object* other) const {
  const auto* text = dynamic_cast<const NSAttributedString*>(other);
  return text != nullptr && text->runs_ == runs_;
}

}  // namespace quoll::platform

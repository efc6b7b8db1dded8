#include "quoll/linux/xml/styled_text.h"

#include <algorithm>
#include <string>
#include <utility>

#include "quoll/foundation/text.h"
#include "quoll/linux/xml/html_reader.h"
#include "quoll/linux/xml/html_writer.h"
#include "quoll/linux/xml/reader_module.h"
#include "quoll/platform/log.h"

namespace quoll::xml {
namespace {

class HtmlText final : public platform::StyledText {
 public:
  explicit HtmlText(ReaderFunction<ReadHtml> reader) : reader_(std::move(reader)) {}

  std::shared_ptr<platform::NSAttributedString> from_html(std::string_view html) override {
    std::vector<platform::TextRun> runs;
    if (const std::string problem = read(html, runs); !problem.empty()) {
      platform::log("the HTML text cannot be read: %@", problem);
      return nullptr;
    }
    return std::make_shared<platform::NSAttributedString>(std::move(runs));
  }

  std::optional<foundation::Bytes> to_html(const platform::NSAttributedString& text) override {
    const bool readable = std::ranges::all_of(
        text.runs(), [](const platform::TextRun& run) { return foundation::is_utf8(run.text); });
    if (!readable) {
      platform::log_line("the styled text cannot be written as HTML: it is not UTF-8");
      return std::nullopt;
    }
    return html_document(text);
  }

 private:
  /// Fills `runs`. Answers why it failed, or the empty text.
  [[nodiscard]] std::string read(std::string_view html,
                                 std::vector<platform::TextRun>& runs) const {
    if (reader_.call == nullptr) {
      return reader_.problem;
    }
    if (!foundation::is_utf8(html)) {
      return "it is not UTF-8";
    }
    const char* problem = reader_.call(html.data(), html.size(), &runs);
    return problem != nullptr ? problem : "";
  }

  const ReaderFunction<ReadHtml> reader_;
};

}  // namespace

std::shared_ptr<platform::StyledText> make_styled_text(bool with_html_reader) {
  return std::make_shared<HtmlText>(
      with_html_reader ? load_reader<ReadHtml>(kReadHtmlName)
                       : ReaderFunction<ReadHtml>{nullptr, "this program reads no HTML"});
}

}  // namespace quoll::xml

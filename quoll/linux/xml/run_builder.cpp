#include "quoll/linux/xml/run_builder.h"

#include <algorithm>
#include <utility>

namespace quoll::xml {
namespace {

constexpr std::string_view kWhite = " \t\n\f\r";
/// The limit in bytes for repeated links. One long link around many short pieces of text would make
/// the result a thousand times as large as the document; beyond the limit, text is kept without its
/// links.
constexpr std::size_t kMostRepeated = std::size_t{64} << 20U;

/// The length in bytes of a control character at `at` that HTML forbids; 0 when there is none.
std::size_t control_at(std::string_view text, std::size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  if (byte == 0xC2 && at + 1 < text.size()) {
    return static_cast<unsigned char>(text[at + 1]) < 0xA0 ? 2 : 0;
  }
  return (byte < 0x20 && byte != '\t') || byte == 0x7F ? 1 : 0;
}

/// The position of the first such character, or the end of the text.
std::size_t find_control(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && control_at(text, at) == 0) {
    ++at;
  }
  return at;
}

}  // namespace

void RunBuilder::text(std::string_view text, const Look& look) {
  while (!text.empty()) {
    const auto word = std::min(text.find_first_not_of(kWhite), text.size());
    if (word > 0 && line_has_text_ && !break_pending_ && !blank_last_) {
      append(" ", look);
      blank_last_ = true;
    }
    text.remove_prefix(word);
    const auto end = std::min(text.find_first_of(kWhite), text.size());
    visible(text.substr(0, end), look);
    text.remove_prefix(end);
  }
}

void RunBuilder::preserved_text(std::string_view text, const Look& look) {
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    visible(text.substr(0, end), look);
    if (end < text.size()) {
      line_break();
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void RunBuilder::block_boundary() {
  if (marker_.empty() && line_has_text_) {
    break_pending_ = true;
  }
}

void RunBuilder::line_break() {
  begin_line();
  break_pending_ = true;
}

void RunBuilder::cell_boundary() {
  drop_trailing_blank();
  break_pending_ = false;
  marker_ += '\t';
}

void RunBuilder::set_marker(std::string marker) {
  marker_ = std::move(marker);
}

std::vector<platform::TextRun> RunBuilder::take() {
  drop_trailing_blank();
  std::erase_if(runs_, [](const platform::TextRun& run) { return run.text.empty(); });
  return std::move(runs_);
}

void RunBuilder::visible(std::string_view text, const Look& look) {
  while (!text.empty()) {
    const auto end = find_control(text);
    shown(text.substr(0, end), look);
    text.remove_prefix(end < text.size() ? end + control_at(text, end) : end);
  }
}

void RunBuilder::shown(std::string_view text, const Look& look) {
  if (text.empty()) {
    return;
  }
  begin_line();
  append(text, look);
  blank_last_ = false;
  line_has_text_ = true;
}

void RunBuilder::begin_line() {
  if (break_pending_) {
    drop_trailing_blank();
    append("\n", runs_.empty() ? Look{} : look_);
    break_pending_ = false;
    line_has_text_ = false;
  }
  if (!marker_.empty()) {
    append(std::exchange(marker_, {}), {});
    line_has_text_ = true;
  }
}

void RunBuilder::append(std::string_view text, const Look& look) {
  if (text == "\n") {
    repeated_ += look.link.view().size();
  }
  const bool link_too_many = repeated_ >= kMostRepeated && !look.link.view().empty() &&
                             !runs_.empty() && !runs_.back().attributes.link.empty();
  if (runs_.empty() || link_too_many || !(look == look_)) {
    start_run(look);
  }
  runs_.back().text += text;
}

void RunBuilder::start_run(const Look& look) {
  look_ = look;
  const std::string_view link = repeated_ < kMostRepeated ? look.link.view() : std::string_view();
  repeated_ += link.size();
  runs_.push_back({{},
                   {.bold = look.bold,
                    .italic = look.italic,
                    .underline = look.underline,
                    .strikethrough = look.strikethrough,
                    .colour = look.colour,
                    .background = look.background,
                    .font = std::string(look.font.view()),
                    .size = look.size,
                    .link = std::string(link)}});
}

void RunBuilder::drop_trailing_blank() {
  if (std::exchange(blank_last_, false)) {
    runs_.back().text.pop_back();
  }
}

}  // namespace quoll::xml

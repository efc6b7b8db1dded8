#include "quoll/linux/xml/run_builder.h"

#include <algorithm>
#include <utility>

#include "quoll/linux/xml/markup.h"

namespace quoll::xml {
namespace {

/// The limit in bytes for repeated links. One long link around many short pieces of text would make
/// the result a thousand times as large as the document; beyond the limit, text is kept without its
/// links.
constexpr std::size_t kMostRepeated = std::size_t{64} << 20U;

/// The length of what two lines begin with.
std::size_t same_beginning(std::string_view a, std::string_view b) {
  return static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
}

}  // namespace

void RunBuilder::text(std::string_view text, const Look& look) {
  while (!text.empty()) {
    const auto word = std::min(text.find_first_not_of(kWhite), text.size());
    if (word > 0 && line_has_text_ && breaks_pending_ == 0 && !blank_last_) {
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

void RunBuilder::block_boundary(int breaks) {
  if (marker_.empty() && line_has_text_) {
    breaks_pending_ = std::max(breaks_pending_, breaks);
  }
}

void RunBuilder::line_break() {
  begin_line();
  breaks_pending_ = 1;
}

void RunBuilder::cell_boundary() {
  drop_trailing_blank();
  breaks_pending_ = 0;
  if (marker_.empty()) {
    set_marker({}, 0);
  }
  marker_ += '\t';
}

void RunBuilder::set_marker(std::string marker, std::size_t hanging) {
  marker_ = std::move(marker);
  before_marker_ = prefix_.size();
  behind_marker_ = prefix_.size() + hanging;
}

void RunBuilder::add_word(std::string_view word) {
  if (!line_has_text_) {
    begin_line();
  }
  append(blank_last_ || !line_has_text_ ? "" : " ", look_);
  append(word, look_);
  append(blank_last_ ? " " : "", look_);
  line_has_text_ = true;
}

void RunBuilder::indent(std::string_view more) {
  prefix_ += more;
}

void RunBuilder::outdent(std::size_t less) {
  prefix_.resize(prefix_.size() - less);
}

std::vector<platform::TextRun> RunBuilder::take() {
  drop_trailing_blank();
  std::erase_if(runs_, [](const platform::TextRun& run) { return run.text.empty(); });
  return std::move(runs_);
}

void RunBuilder::visible(std::string_view text, const Look& look) {
  without_controls(text, [&](std::string_view piece) {
    begin_line();
    append(piece, look);
    blank_last_ = false;
    line_has_text_ = true;
  });
}

void RunBuilder::begin_line() {
  if (breaks_pending_ > 0) {
    end_line(std::exchange(breaks_pending_, 0));
  }
  const std::string_view prefix = std::exchange(line_begun_, true) ? std::string_view() : prefix_;
  const bool marked = !marker_.empty();
  if (!prefix.empty()) {
    append(prefix.substr(0, marked ? before_marker_ : prefix.size()), {});
    line_prefix_ = prefix;
  }
  if (marked) {
    append(std::exchange(marker_, {}), {});
    line_has_text_ = true;
  }
  if (marked && prefix.size() > behind_marker_) {
    append(prefix.substr(behind_marker_), {});
  }
}

void RunBuilder::end_line(int breaks) {
  drop_trailing_blank();
  const auto drop_blanks = [this] {
    while (runs_.back().text.ends_with(' ')) {
      runs_.back().text.pop_back();
    }
  };
  if (!line_has_text_ && !line_prefix_.empty()) {
    drop_blanks();
  }
  const Look look = runs_.empty() ? Look{} : look_;
  append("\n", look);
  for (; breaks > 1; --breaks) {
    append(std::string_view(prefix_).substr(0, same_beginning(line_prefix_, prefix_)), look);
    drop_blanks();
    append("\n", look);
  }
  line_prefix_.clear();
  line_begun_ = line_has_text_ = false;
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

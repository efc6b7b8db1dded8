#include "quoll/linux/xml/html_writer.h"

#include <algorithm>
#include <string>

#include "quoll/foundation/number_text.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/xml/markup.h"

namespace quoll::xml {
namespace {

using foundation::Bytes;
using platform::TextAttributes;

constexpr std::string_view kOpening =
    "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n"
    "<meta name=\"generator\" content=\"Quoll Share\">\n"
    "<style>";
constexpr std::string_view kBody = "</style>\n</head>\n<body>\n";
constexpr std::string_view kClosing = "</body>\n</html>\n";
/// In points. A larger size is a mistake, or an attack on the program that lays out the text.
constexpr double kLargestSize = 1638;

void add(Bytes& out, std::string_view text) {
  out.insert(out.end(), text.begin(), text.end());
}

bool is_line_end(char byte) {
  return byte == '\n' || byte == '\r';
}
/// Vertical tab and form feed are written as blanks: HTML forbids them, but they separate words.
bool is_blank(char byte) {
  return byte == ' ' || byte == '\v' || byte == '\f';
}
bool is_white(char byte) {
  return is_blank(byte) || byte == '\t' || is_line_end(byte);
}
std::string css(const TextAttributes& look) {
  std::string text;
  const auto declare = [&text](std::string_view property, std::string_view value) {
    text += text.empty() ? "" : "; ";
    text.append(property).append(": ").append(value);
  };
  if (!look.font.empty() && foundation::is_utf8(look.font)) {
    declare("font-family", family_text(look.font));
  }
  if (look.size > 0 && look.size <= kLargestSize) {
    declare("font-size", foundation::text_of_real(look.size) + "pt");
  }
  if (look.colour) {
    declare("color", colour_text(*look.colour));
  }
  if (look.background) {
    declare("background-color", colour_text(*look.background));
  }
  return text;
}

/// The tags around text with these attributes.
struct Tags {
  std::string opening;
  std::string closing;

  explicit Tags(const TextAttributes& look) {
    if (!look.link.empty() && foundation::is_utf8(look.link)) {
      nest("a", "href", look.link);
    }
    if (const std::string style = css(look); !style.empty()) {
      nest("span", "style", style);
    }
    if (look.bold) {
      nest("b");
    }
    if (look.italic) {
      nest("i");
    }
    if (look.underline) {
      nest("u");
    }
    if (look.strikethrough) {
      nest("s");
    }
  }

 private:
  void nest(std::string_view tag, std::string_view attribute = {}, std::string_view value = {}) {
    opening.append("<").append(tag);
    if (!attribute.empty()) {
      add_attribute(opening, attribute, value);
    }
    opening += '>';
    closing.insert(0, std::string("</").append(tag).append(">"));
  }
};

class Writer {
 public:
  explicit Writer(std::string_view text) : text_(text) {
    out_.reserve(text.size() + text.size() / 8 + kOpening.size() + kClosing.size());
  }

  Bytes document(const std::vector<platform::TextRun>& runs) {
    for (const std::string_view part : {kOpening, kParagraphRule, kBody}) {
      add(out_, part);
    }
    for (const platform::TextRun& run : runs) {
      write_run(at_ + run.text.size(), Tags(run.attributes));
    }
    if (in_paragraph_) {
      end_paragraph();
    }
    add(out_, kClosing);
    return std::move(out_);
  }

 private:
  /// Writes the text up to `end`, which all has the same attributes.
  void write_run(std::size_t end, const Tags& tags) {
    while (at_ < end) {
      const auto line_end =
          std::find_if(text_.begin() + static_cast<std::ptrdiff_t>(at_),
                       text_.begin() + static_cast<std::ptrdiff_t>(end), is_line_end);
      const auto piece_end = static_cast<std::size_t>(line_end - text_.begin());
      if (piece_end > at_) {
        begin_paragraph();
        add(out_, tags.opening);
        write_piece(piece_end);
        add(out_, tags.closing);
      }
      if (at_ < end) {
        write_line_end();
      }
    }
  }

  void write_line_end() {
    const bool second_half = text_[at_] == '\n' && at_ > 0 && text_[at_ - 1] == '\r';
    ++at_;
    if (second_half) {
      return;
    }
    if (!in_paragraph_) {
      begin_paragraph();
      add(out_, "<br>");
    }
    end_paragraph();
  }

  /// Writes text up to `end`, without line ends in it.
  void write_piece(std::size_t end) {
    while (at_ < end) {
      const char byte = text_[at_];
      if (is_blank(byte)) {
        write_blanks(end);
      } else if (byte == '\t') {
        add(out_, "<span style=\"white-space: pre\">\t</span>");
        ++at_;
      } else if (const std::size_t control = control_at(text_, at_); control > 0) {
        at_ = std::min(at_ + control, end);
      } else {
        if (const auto escaped = escape(byte); !escaped.empty()) {
          add(out_, escaped);
        } else {
          out_.push_back(static_cast<unsigned char>(byte));
        }
        ++at_;
      }
    }
  }

  /// Writes a row of blanks. A program that shows HTML joins blanks, and drops them at the ends of
  /// a paragraph; it keeps no-break blanks. The last blank before a word is an ordinary one, so
  /// that the line can be broken there.
  void write_blanks(std::size_t end) {
    auto blanks_end = at_;
    while (blanks_end < end && is_blank(text_[blanks_end])) {
      ++blanks_end;
    }
    const bool before_word = blanks_end < text_.size() && !is_white(text_[blanks_end]);
    const bool after_line_end = at_ == 0 || is_line_end(text_[at_ - 1]);
    auto kept = blanks_end - at_;
    const bool ordinary_last = before_word && (kept > 1 || !after_line_end);
    kept -= ordinary_last ? 1 : 0;
    if (kept > 0) {
      add(out_, "<span class=\"");
      add(out_, kBlanksClass);
      add(out_, "\">");
      for (; kept > 0; --kept) {
        add(out_, kNoBreakBlank);
      }
      add(out_, "</span>");
    }
    if (ordinary_last) {
      out_.push_back(' ');
    }
    at_ = blanks_end;
  }

  void begin_paragraph() {
    if (!in_paragraph_) {
      add(out_, "<p>");
      in_paragraph_ = true;
    }
  }

  void end_paragraph() {
    add(out_, "</p>\n");
    in_paragraph_ = false;
  }

  /// The text of all runs, and the length that has been written.
  std::string_view text_;
  std::size_t at_ = 0;
  bool in_paragraph_ = false;
  Bytes out_;
};

}  // namespace

Bytes html_document(const platform::NSAttributedString& text) {
  return Writer(text.string()).document(text.runs());
}

}  // namespace quoll::xml

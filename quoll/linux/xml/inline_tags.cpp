#include "quoll/linux/xml/inline_tags.h"

#include <utility>

#include "quoll/linux/xml/mail_look.h"
#include "quoll/linux/xml/markup.h"

namespace quoll::xml {

void InlineTags::switch_to(std::string& out, Look look, bool preserved, const Look& around,
                           bool around_preserved) {
  if (open_ && look == look_ && preserved == preserved_) {
    return;
  }
  if (open_ && look.link == look_.link) {
    out += std::exchange(end_, {});
  } else {
    close(out);
    if (!look.link.view().empty()) {
      out += "<a";
      add_attribute(out, "href", look.link.view());
      out += '>';
    }
  }
  look_ = std::move(look);
  preserved_ = preserved;
  open_ = true;
  open(out, around, around_preserved);
}

void InlineTags::close(std::string& out) {
  out += std::exchange(end_, {});
  if (std::exchange(open_, false) && !look_.link.view().empty()) {
    out += "</a>";
  }
}

void InlineTags::open(std::string& out, Look around, bool around_preserved) {
  if (look_.font.view() == "monospace" && !(look_.font == around.font)) {
    nest(out, "code");
    around.font = look_.font;
  }
  const bool bold = look_.bold && !std::exchange(around.bold, look_.bold);
  const bool italic = look_.italic && !std::exchange(around.italic, look_.italic);
  if (const auto style = style_between(around, around_preserved, look_, preserved_);
      !style.empty()) {
    nest(out, "span", style);
  }
  if (bold) {
    nest(out, "b");
  }
  if (italic) {
    nest(out, "i");
  }
  if (look_.underline) {
    nest(out, "u");
  }
  if (look_.strikethrough) {
    nest(out, "s");
  }
}

void InlineTags::nest(std::string& out, std::string_view tag, std::string_view style) {
  out.append("<").append(tag);
  if (!style.empty()) {
    add_attribute(out, "style", style);
  }
  out += '>';
  end_.insert(0, "</" + std::string(tag) + ">");
}

}  // namespace quoll::xml

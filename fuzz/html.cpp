// Reads any bytes as HTML, and writes any runs of styled text. What is read and then written is
// read again as the same runs. What is written is well-formed UTF-8 and has only the few tags of
// the writer, each with its one attribute.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/require.h"
#include "fuzz/script.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/xml/html_reader.h"
#include "quoll/linux/xml/html_writer.h"

extern "C" quoll::xml::ReadHtml quoll_read_html;

namespace {

using quoll::fuzz::require;
using quoll::platform::NSAttributedString;
using quoll::platform::TextRun;

std::vector<TextRun> read(std::string_view html) {
  std::vector<TextRun> runs;
  const char* const problem = quoll_read_html(html.data(), html.size(), &runs);
  require(problem == nullptr || runs.empty());
  for (const TextRun& run : runs) {
    require(!run.text.empty());
    for (const std::string* const text : {&run.text, &run.attributes.font, &run.attributes.link}) {
      require(quoll::foundation::is_utf8(*text));
    }
  }
  return runs;
}

/// The text without control characters, except those in `but`; HTML keeps none of them.
std::string kept(std::string_view text, std::string_view but) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool wide = byte == 0xC2 && static_cast<unsigned char>(text[at + 1]) < 0xA0;
    if (!wide && ((byte >= 0x20 && byte != 0x7F) || but.find(text[at]) != std::string_view::npos)) {
      out += text[at];
    }
    at += wide ? 1 : 0;
  }
  return out;
}

/// Appends a text. Runs with the same attributes become one.
void append(std::vector<TextRun>& runs, std::string_view text,
            const quoll::platform::TextAttributes& look) {
  if (text.empty()) {
    return;
  }
  if (runs.empty() || runs.back().attributes != look) {
    runs.push_back({{}, look});
  }
  runs.back().text += text;
}

/// The runs as they are read again: without empty runs, with line feeds that have no attributes,
/// and without empty lines at the end.
std::vector<TextRun> kept(const std::vector<TextRun>& runs) {
  std::vector<TextRun> out;
  std::size_t line_feeds = 0;
  for (const TextRun& run : runs) {
    auto look = run.attributes;
    look.font = kept(look.font, "");
    look.link = kept(look.link, "");
    const std::string text = kept(run.text, "\t\n");
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = std::min(text.find('\n', at), text.size());
      if (end > at) {
        append(out, std::string(std::exchange(line_feeds, 0), '\n'), {});
        append(out, text.substr(at, end - at), look);
      }
      line_feeds += end < text.size() ? 1 : 0;
      at = end + 1;
    }
  }
  return out;
}

std::string write(const std::vector<TextRun>& runs) {
  const auto document = quoll::xml::html_document(NSAttributedString(runs));
  return {document.begin(), document.end()};
}

/// Removes `text` from the beginning of `rest`, if it is there.
bool take(std::string_view& rest, std::string_view text) {
  const bool stands = rest.starts_with(text);
  rest.remove_prefix(stands ? text.size() : 0);
  return stands;
}

/// Removes a tag from the beginning of `rest` and keeps a list of the open ones.
void take_tag(std::string_view& rest, std::vector<std::string_view>& open) {
  constexpr std::array<std::string_view, 6> kPlain{"p", "b", "i", "u", "s", "br"};
  constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kWithValue{
      {{"a", " href=\""}, {"span", " style=\""}, {"span", " class=\""}}};
  const std::size_t end = rest.find('>');
  require(end != std::string_view::npos);
  std::string_view tag = rest.substr(1, end - 1);
  rest.remove_prefix(end + 1);
  if (take(tag, "/")) {
    require(!open.empty() && open.back() == tag);
    open.pop_back();
    return;
  }
  for (const std::string_view name : kPlain) {
    if (tag == name) {
      open.push_back(name);
      if (name == "br") {
        open.pop_back();
      }
      return;
    }
  }
  for (const auto& [name, attribute] : kWithValue) {
    std::string_view inside = tag;
    if (take(inside, name) && take(inside, attribute)) {
      require(inside.find('"') == inside.size() - 1);
      open.push_back(name);
      return;
    }
  }
  require(false);
}

void check_characters(std::string_view document) {
  require(quoll::foundation::is_utf8(document));
  for (std::size_t at = 0; at < document.size(); ++at) {
    const auto byte = static_cast<unsigned char>(document[at]);
    require(byte == '\t' || byte == '\n' || (byte >= 0x20 && byte != 0x7F));
    if (byte == '&') {
      std::string_view rest = document.substr(at);
      require(take(rest, "&amp;") || take(rest, "&lt;") || take(rest, "&gt;") ||
              take(rest, "&quot;"));
    }
  }
}

void check_document(std::string_view document) {
  check_characters(document);
  const std::size_t start = document.find("<body>\n");
  require(start != std::string_view::npos);
  std::string_view rest = document.substr(start + 7);
  std::vector<std::string_view> open;
  while (!take(rest, "</body>\n</html>\n")) {
    require(!rest.empty());
    if (rest[0] == '<') {
      take_tag(rest, open);
    } else {
      require(rest[0] != '>' && rest[0] != '"' && (rest[0] == '\n') == open.empty());
      rest.remove_prefix(1);
    }
  }
  require(rest.empty() && open.empty());
}

std::vector<TextRun> make_runs(quoll::fuzz::Script script) {
  std::vector<TextRun> runs;
  while (script.goes_on()) {
    TextRun run;
    const std::uint8_t style = script.byte();
    run.attributes.bold = (style & 1U) != 0;
    run.attributes.italic = (style & 2U) != 0;
    run.attributes.underline = (style & 4U) != 0;
    run.attributes.strikethrough = (style & 8U) != 0;
    if ((style & 16U) != 0) {
      run.attributes.colour = script.number<std::uint32_t>() & 0xFFFFFFU;
      run.attributes.background = script.number<std::uint32_t>() & 0xFFFFFFU;
    }
    if ((style & 32U) != 0) {
      run.attributes.size = script.number<double>();
    }
    if ((style & 64U) != 0) {
      run.attributes.font = script.text(16);
      run.attributes.link = script.text();
    }
    run.text = quoll::foundation::utf8_with_escapes(script.text());
    runs.push_back(std::move(run));
  }
  return runs;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view html(reinterpret_cast<const char*>(data), size);
  const auto check_again = [](const std::vector<TextRun>& runs) {
    const std::string document = write(runs);
    check_document(document);
    require(kept(read(document)) == kept(runs));
  };
  if (quoll::foundation::is_utf8(html)) {
    check_again(read(html));
  }
  const std::string document = write(make_runs(quoll::fuzz::Script({data, size})));
  check_document(document);
  check_again(read(document));
  return 0;
}

#include "quoll/linux/xml/html_reader.h"

#include <libxml/HTMLparser.h>
#include <libxml/parser.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "quoll/linux/xml/document_reader.h"
#include "quoll/linux/xml/mail_document.h"
#include "quoll/linux/xml/markup.h"
#include "quoll/linux/xml/text_form.h"

namespace quoll::xml {
namespace {

/// The limit for the parser's time: it compares an end tag that closes nothing with every open
/// element.
constexpr std::size_t kMostComparisons = 200'000'000;
/// The number of names that the parser's dictionary takes. The parser compares each attribute of a
/// tag with those before it, so this limits that time too: names beyond it are not accepted as
/// attributes.
constexpr std::size_t kDictionaryLimit = 16384;
constexpr std::size_t kChunk = 65536;
/// The number of open elements of a mail. Each takes about 150 bytes.
constexpr std::size_t kMostOpenInMail = 262'144;
constexpr const char* kNoMemory = "there is not enough memory";

/// The state of reading one document. No exception may pass through the parser: a failure is kept
/// here, and the parser is stopped.
struct Reading {
  explicit Reading(DocumentForm& to) : form(to), document(to) {}

  DocumentForm& form;
  DocumentReader document;
  std::size_t most_open = std::numeric_limits<std::size_t>::max();
  htmlParserCtxtPtr parser = nullptr;
  std::size_t comparisons = 0;
  const char* problem = nullptr;

  void fail(const char* why) {
    problem = why;
    xmlStopParser(parser);
  }
};

template <typename Step>
void guarded(void* user, Step step) {
  Reading& reading = *static_cast<Reading*>(user);
  if (reading.problem != nullptr) {
    return;
  }
  try {
    step(reading);
    if (reading.form.is_full() || reading.document.depth() > reading.most_open) {
      reading.fail("it is too long");
    }
  } catch (const std::bad_alloc&) {
    reading.fail(kNoMemory);
  }
}

std::string_view view(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : std::string_view();
}

void on_start(void* user, const xmlChar* name, const xmlChar** given) {
  guarded(user, [&](Reading& reading) {
    std::vector<Attribute> attributes;
    for (; given != nullptr && given[0] != nullptr; given += 2) {
      attributes.emplace_back(view(given[0]), view(given[1]));
    }
    reading.document.open(view(name), attributes);
  });
}

void on_end(void* user, const xmlChar* /*name*/) {
  guarded(user, [](Reading& reading) { reading.document.close(); });
}

void on_text(void* user, const xmlChar* text, int length) {
  guarded(user, [&](Reading& reading) {
    reading.document.text({reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
  });
}

void on_error(void* user, int code) {
  guarded(user, [&](Reading& reading) {
    reading.comparisons += code == XML_ERR_TAG_NAME_MISMATCH ? reading.document.depth() : 0;
    if (reading.comparisons > kMostComparisons) {
      reading.fail("its elements are nested too deeply");
    }
  });
}

htmlSAXHandler handler() {
  htmlSAXHandler sax{};
  sax.initialized = XML_SAX2_MAGIC;
  sax.startElement = on_start;
  sax.endElement = on_end;
  sax.characters = on_text;
  sax.ignorableWhitespace = on_text;
  // The error is constant in some versions of the library and not in others.
  sax.serror = [](void* user, auto* error) { on_error(user, error->code); };
  return sax;
}

/// Gives the parser the text with line feeds as line ends, and without zero bytes, at which it
/// might stop.
void parse(const Reading& reading, std::string_view html) {
  std::string chunk;
  for (std::size_t at = 0; at < html.size() && reading.problem == nullptr;) {
    chunk.clear();
    for (const std::size_t end = std::min(at + kChunk, html.size()); at < end; ++at) {
      const bool half = html[at] == '\r' && html.substr(at + 1).starts_with('\n');
      if (html[at] != '\0' && !half) {
        chunk += html[at] == '\r' ? '\n' : html[at];
      }
    }
    htmlParseChunk(reading.parser, chunk.data(), static_cast<int>(chunk.size()), 0);
  }
}

/// Reads the document into the form. Answers null, or why it was not read to its end.
const char* read(std::string_view html, Reading& reading) {
  [[maybe_unused]] static const bool initialised = (xmlInitParser(), true);
  htmlSAXHandler sax = handler();
  const std::unique_ptr<htmlParserCtxt, decltype(&htmlFreeParserCtxt)> parser(
      htmlCreatePushParserCtxt(&sax, &reading, nullptr, 0, nullptr, XML_CHAR_ENCODING_UTF8),
      &htmlFreeParserCtxt);
  if (!parser) {
    return kNoMemory;
  }
  reading.parser = parser.get();
  // The text is UTF-8, whatever encoding it declares.
  htmlCtxtUseOptions(parser.get(), HTML_PARSE_IGNORE_ENC);
  for (const std::string_view name : known_names()) {
    xmlDictLookup(parser->dict, reinterpret_cast<const xmlChar*>(name.data()),
                  static_cast<int>(name.size()));
  }
  xmlDictSetLimit(parser->dict, kDictionaryLimit);
  // Mail programs and mailing lists add text behind `</html>`, which the parser would drop. For
  // each `<html>` too many it ignores one `</html>`.
  for (int spare = 0; spare < 64; ++spare) {
    parse(reading, "<html>");
  }
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  html.remove_prefix(html.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
  // The parser would make a paragraph of a text that no element is around.
  const auto start = html.find_first_not_of(kWhite);
  if (start != std::string_view::npos && html[start] != '<') {
    parse(reading, "<body>");
  }
  parse(reading, html);
  htmlParseChunk(parser.get(), nullptr, 0, 1);
  return reading.problem;
}

const char* read_runs(std::string_view html, std::vector<platform::TextRun>& runs) {
  TextForm form(TextForm::Kind::kStyled);
  Reading reading(form);
  const char* const problem = read(html, reading);
  if (problem == nullptr) {
    runs = form.take_runs();
  }
  return problem;
}

const char* read_mail(std::string_view html, MailBodies& bodies) {
  MailDocument form;
  Reading reading(form);
  reading.most_open = kMostOpenInMail;
  const char* const problem = read(html, reading);
  if (problem == kNoMemory) {
    return problem;
  }
  bodies = form.take(problem == nullptr);
  return nullptr;
}

/// No exception may leave the module.
template <typename Read, typename Result>
const char* guarded_read(Read read, std::string_view html, Result* result) noexcept {
  try {
    return read(html, *result);
  } catch (const std::bad_alloc&) {
    return kNoMemory;
  }
}

}  // namespace
}  // namespace quoll::xml

extern "C" __attribute__((visibility("default"))) const char* quoll_read_html(
    const char* html, std::size_t size, std::vector<quoll::platform::TextRun>* runs) noexcept {
  return quoll::xml::guarded_read(quoll::xml::read_runs, {html, size}, runs);
}

extern "C" __attribute__((visibility("default"))) const char* quoll_read_mail(
    const char* html, std::size_t size, quoll::xml::MailBodies* bodies) noexcept {
  return quoll::xml::guarded_read(quoll::xml::read_mail, {html, size}, bodies);
}

#include "quoll/linux/xml/mail_form.h"

#include <new>
#include <stdexcept>

#include "quoll/foundation/text.h"
#include "quoll/linux/xml/html_reader.h"
#include "quoll/linux/xml/reader_module.h"

namespace quoll::xml {
namespace {

const ReaderFunction<ReadMail>& reader() {
  static const auto kReader = [] {
    auto found = load_reader<ReadMail>(kReadMailName);
    if (MailBodies bodies; found.call != nullptr) {
      found.call("", 0, &bodies);  // the parser gets ready
    }
    return found;
  }();
  return kReader;
}

}  // namespace

std::string load_mail_reader() {
  return reader().problem;
}

MailBodies mail_bodies(std::string_view html) {
  if (reader().call == nullptr) {
    throw std::runtime_error("the HTML text cannot be read: " + reader().problem);
  }
  const std::string text =
      foundation::is_utf8(html) ? std::string() : foundation::utf8_with_escapes(html);
  html = text.empty() ? html : text;
  MailBodies bodies;
  if (reader().call(html.data(), html.size(), &bodies) != nullptr) {
    throw std::bad_alloc();
  }
  return bodies;
}

}  // namespace quoll::xml

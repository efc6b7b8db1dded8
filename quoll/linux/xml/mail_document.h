#pragma once

#include <string>
#include <string_view>

#include "quoll/linux/xml/document_form.h"
#include "quoll/linux/xml/mail_form.h"
#include "quoll/linux/xml/mail_html.h"
#include "quoll/linux/xml/text_form.h"

namespace quoll::xml {

/// A document as both bodies of a mail. In the plain text the address of a link stands behind its
/// text. Two links with nothing between them come on two lines.
class MailDocument final : public DocumentForm {
 public:
  void begin(const Element& element, const Inherited& inherited, Attributes attributes) override;
  void end(const Element& element) override;
  void text(std::string_view text, const Inherited& inherited) override;
  [[nodiscard]] bool is_full() const override;

  /// The bodies. When the document was not read to its end, a sentence at theirs says so.
  [[nodiscard]] MailBodies take(bool whole);

 private:
  void begin_anchor(const SharedText& link);
  void add_to_link(std::string_view text, const SharedText& link);
  void end_line();
  void end_link();
  [[nodiscard]] bool shows_text() const;
  [[nodiscard]] bool shows_address() const;

  MailHtml html_;
  TextForm text_{TextForm::Kind::kPlain};
  /// The link that the last text belongs to, and the text of the link.
  SharedText link_;
  std::string shown_;
  /// The link has ended, and nothing came behind it.
  bool after_anchor_ = false;
};

}  // namespace quoll::xml

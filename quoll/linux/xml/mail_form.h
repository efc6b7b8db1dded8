#pragma once

#include <string>
#include <string_view>

namespace quoll::xml {

/// The two bodies of a mail, made of one HTML document.
struct MailBodies {
  /// A whole document in UTF-8. It has the elements of mail: paragraphs, tables, lists, quotes,
  /// headings, pictures of the same message (`cid:`), and text with its look and its links (`http`,
  /// `https`, `mailto`, `ftp`, `tel`). Nothing in it hides text, and nothing is loaded or run.
  /// Reading it gives the same document.
  std::string html;
  /// The same as text. Lines end with LF; there is no other control character but the tab between
  /// cells. Paragraphs have an empty line between them; "> " stands before quotes, and the address
  /// of a link behind its text: `text <address>`.
  std::string text;
};

/// Loads the reader, which is a module, so that it can be used after the program has confined
/// itself. Answers the empty text, or why it cannot be loaded. Any thread may call, any number of
/// times. The module is in `../<libdir>/quoll/`, seen from the folder of the running program.
[[nodiscard]] std::string load_mail_reader();

/// Reads a document, or several one behind the other. What is not UTF-8 is replaced by escapes.
/// A body has 128 MiB, and elements are 262,144 deep, at most; what is beyond is left out, and a
/// sentence at the end of both bodies says so. Time and memory grow with the length of the
/// document. Loads the reader if it is not loaded. Any thread may call. Throws `std::bad_alloc`,
/// and `std::runtime_error` when the reader cannot be loaded.
[[nodiscard]] MailBodies mail_bodies(std::string_view html);

}  // namespace quoll::xml

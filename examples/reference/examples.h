#pragma once

/// The examples of the reference, one for each file. Each prints what stands behind its lines as a
/// comment.
namespace examples {
void url_query();
void url_editing();
void url_components();
void base64_text();
void http_request();
void nsurl();
void values();
void property_lists();
void texts();
void errors();
void dates();
void records();
void messages();
}  // namespace examples

/// @example url_query.cpp
/// Queries: quoll/requestutils/url_query.h.

/// @example url_editing.cpp
/// URLs edited as text: quoll/requestutils/url_editing.h.

/// @example url_components.cpp
/// Components of URLs: quoll/requestutils/url_components.h.

/// @example base64_text.cpp
/// Base64 of texts: quoll/requestutils/base64_text.h.

/// @example http_request.cpp
/// HTTP requests: quoll/requestutils/http_request.h and quoll/foundation/url_request.h.

/// @example nsurl.cpp
/// URLs: quoll/foundation/nsurl.h.

/// @example values.cpp
/// Values and collections: quoll/foundation/value.h and quoll/foundation/collections.h.

/// @example property_lists.cpp
/// Property lists: quoll/foundation/property_list.h.

/// @example texts.cpp
/// Texts, paths, numbers and patterns: quoll/foundation/text.h, path.h, number_text.h, percent.h,
/// base64.h, printable.h and format.h.

/// @example errors.cpp
/// Errors and exceptions: quoll/foundation/error.h and quoll/foundation/exception.h.

/// @example dates.cpp
/// Dates as text: quoll/foundation/exchange_date.h and quoll/foundation/calendar.h.

/// @example records.cpp
/// Records: quoll/records/extension_account.h, extension_alias.h, extension_address.h and
/// extension_group.h.

/// @example messages.cpp
/// Messages and commands: quoll/message/extension_message.h, received_command.h and
/// command_launcher.h.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/console/operations/property_list_writer.h"

/// What this program does. Each answers the exit status.
namespace quoll::console {

/// Answers the requests on standard input, one a line; 1 when any was raised or refused.
[[nodiscard]] int call();

/// Prints what a command URL says, for people or as JSON; 1 when the text is not a command URL.
[[nodiscard]] int show(const std::string& text, bool as_json);

/// Prints the components of a URL and the parameters of its query, for people or as JSON; 1 when
/// the text is no URL.
[[nodiscard]] int url(const std::string& text, bool as_json);

/// Prints the mail accounts that the mail application shares; 1 when there is nothing to read.
[[nodiscard]] int accounts(bool as_json);

/// Prints the shared address book, made ready when it is not there; 1 when there is nothing to
/// read.
[[nodiscard]] int contacts(bool as_json);

/// Prints a date in the forms that the records share: the present moment, or the one that a text of
/// the exchange format or a number of seconds since 1970 names; 1 when the text is neither.
[[nodiscard]] int date(const std::optional<std::string>& text, bool as_json);

/// Prints the message in a file, or on standard input for "-", as HTML; 1 when there is none.
[[nodiscard]] int render(const std::string& file, bool as_json);

/// Hands a command on the messages in the files to the mail application; 1 when it was not opened
/// for every one of them.
[[nodiscard]] int launch(const std::string& command, const std::vector<std::string>& files,
                         bool background, bool as_json);

/// Walks the road of a share and prints what it finds, with one thing to do where something is
/// wrong; with `mend` it does first what is safe to do. 1 when a share would not arrive.
[[nodiscard]] int doctor(bool mend, bool as_json);

/// Writes the stores of a mail application, accounts and contacts that are made up, into a group
/// container in the folder, and prints their paths; 1 when one cannot be written.
[[nodiscard]] int sample_container(const std::string& folder, console::PropertyListForm form);

}  // namespace quoll::console

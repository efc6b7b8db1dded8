#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/console/operations/property_list_writer.h"

/// The commands of this program. Each answers the exit status.
namespace quoll::console {

/// Answers the requests on standard input, one on each line; 1 when any of them was raised or
/// refused.
[[nodiscard]] int call();

/// Prints what a command URL says, for people or as JSON; 1 when the text is not a command URL.
[[nodiscard]] int show(const std::string& text, bool as_json);

/// Prints the components of a URL and the parameters of its query, for people or as JSON; 1 when
/// the text is not a URL.
[[nodiscard]] int url(const std::string& text, bool as_json);

/// Prints the mail accounts that the mail application shares; 1 when they cannot be read.
[[nodiscard]] int accounts(bool as_json);

/// Prints the shared address book, which is prepared first if it is missing; 1 when it cannot be
/// read.
[[nodiscard]] int contacts(bool as_json);

/// Prints a date in the forms that the records share. The text is a date of the exchange format or
/// a number of seconds since 1970; without one it is the present moment. 1 when the text is
/// neither.
[[nodiscard]] int date(const std::optional<std::string>& text, bool as_json);

/// Prints the message in a file (standard input for "-") as HTML; 1 when there is no message.
[[nodiscard]] int render(const std::string& file, bool as_json);

/// Opens a command for the messages in the files with the mail application; 1 unless it was opened
/// for all of them.
[[nodiscard]] int launch(const std::string& command, const std::vector<std::string>& files,
                         bool background, bool as_json);

/// Tries each thing that a share needs on its way, and prints what it finds, with one thing to do
/// for each that is wrong. With `repair` it first repairs what can be repaired safely. 1 when a
/// share would not arrive, or not whole.
[[nodiscard]] int doctor(bool repair, bool as_json);

/// Empties the staging folder, when no share needs it any more, and removes what killed shares left
/// in the container. 1 when something stays.
[[nodiscard]] int forget(bool as_json);

/// Writes a group container with made-up accounts and contacts into the folder, as a mail
/// application has them, and prints the paths; 1 when a file cannot be written.
[[nodiscard]] int sample_container(const std::string& folder, PropertyListForm form);

}  // namespace quoll::console

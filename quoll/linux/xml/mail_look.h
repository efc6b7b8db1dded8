#pragma once

#include <string>

#include "quoll/linux/xml/look.h"

namespace quoll::xml {

/// The look, with what it leaves open taken from `around`, and within the limits of mail: letters
/// have at least 6 points, and a font's name has letters, digits, blanks, "-", "_" and "." only.
[[nodiscard]] Look usable_look(Look look, const Look& around);

/// The look in black or white if its colour could not be told from the background.
[[nodiscard]] Look visible_look(Look look);

/// Declarations for the `style` attribute of an element with `look` where text has the look
/// `around` without it; the other two tell whether white space is kept. Underlines, strikes and
/// links are not among them.
[[nodiscard]] std::string style_between(const Look& around, bool around_preserved, const Look& look,
                                        bool preserved);

}  // namespace quoll::xml

#pragma once

#include <string>

#include "apps/share/moving_files.h"
#include "apps/share/request/selection.h"
#include "apps/share/run.h"

namespace quoll::share {

/// Copies the files of a selection into its folder of prepared files, in order, however long that
/// takes, and lets the items answer with the copies, which `files` may then move. Of a picture that
/// came as bytes the helper at `image_helper` makes a PNG file there, and the item answers with its
/// path (`PreparedImages`). The extension waits for its items for only about 10 s.
///
/// A file that cannot be read is left out, and the log says why. One for which there is no room yet
/// stays where it is: the extension empties the staging folder before it copies. A picture for
/// which there is none, or that is damaged, is given to the extension as its bytes. Without a
/// container nothing is prepared.
///
/// `progress` gets the number of items that are ready. Without one the progress is shown at the
/// terminal, if there is one, from the first second on. Answers false, with some items lost, when
/// an `Interruption` has come.
[[nodiscard]] bool prepare(Selection& selection, MovingFiles& files,
                           const std::string& image_helper, const Progress& progress = nullptr);

}  // namespace quoll::share

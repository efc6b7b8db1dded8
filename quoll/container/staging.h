#pragma once

#include <memory>
#include <string_view>

#include "quoll/foundation/collections.h"

/// The folder in which a service's shared files wait for the mail application: `folder` inside the
/// shared data folder. Every operation holds the coordinated write access to that folder while it
/// works and returns when it is done; any thread may call. Failures are logged and not reported.
namespace quoll::ExtensionUtilities {

/// `ShareInit:`: deletes the folder with all that is in it and makes it again, empty.
void ShareInit(std::string_view folder);

/// `ShareFiles:paths:`: copies the files with these paths in, each under the last component of its
/// path or the next free name. Answers the paths of the copies, in order, without those that
/// failed; never null. A null list is an empty one. Paths are bytes; a name that is not UTF-8 is
/// staged with each bad byte as `%XX`, so that its path fits in a URL.
[[nodiscard]] foundation::List ShareFiles(std::string_view folder, const foundation::List& paths);

/// `ShareDatas:datas:`: writes each buffer as "image.png" or the next free name. Answers as
/// `ShareFiles` does.
[[nodiscard]] foundation::List ShareDatas(std::string_view folder, const foundation::List& datas);

}  // namespace quoll::ExtensionUtilities

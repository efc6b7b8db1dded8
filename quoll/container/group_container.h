#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/nsurl.h"

/// Where the mail application and its extensions exchange files. No state; any thread may call.
namespace quoll::ExtensionUtilities {

/// The application group that the mail application and its extensions share.
inline constexpr std::string_view application_group = "K7Q2M9XT4B.quoll";

/// `GroupFolderName`: "SharedDataBeta" when the running bundle's identifier begins with
/// "it.vorlent.quoll.beta", else "SharedData".
[[nodiscard]] std::string GroupFolderName();

/// `GroupPath`: the group's container; null when there is none.
[[nodiscard]] std::shared_ptr<foundation::NSURL> GroupPath();

/// `GroupDataPath`: the shared data folder, `GroupFolderName` inside `GroupPath`; null when there
/// is no container.
[[nodiscard]] std::shared_ptr<foundation::NSURL> GroupDataPath();

}  // namespace quoll::ExtensionUtilities

#pragma once

#include <memory>

#include "quoll/foundation/collections.h"

namespace quoll::ExtensionUtilities {

/// `Accounts`: one `ExtensionAccount` for each element of Accounts.plist in the shared data folder,
/// in order, disabled ones too. Never null; empty when there is nothing to read. Waits for the
/// coordinated access to that file and changes nothing. Failures are logged and not reported; any
/// thread may call.
[[nodiscard]] foundation::List Accounts();

}  // namespace quoll::ExtensionUtilities

#pragma once

#include <memory>

#include "quoll/foundation/collections.h"

namespace quoll::ExtensionUtilities {

/// `AddressesAndGroups`: a dictionary of two lists, "addresses" with one `ExtensionAddress` for
/// each element of Contacts/Addresses.plist in the shared data folder, in order, and "groups",
/// which is always empty. Never null. Waits for the coordinated access to the Contacts folder and
/// makes that folder when it is missing. Failures are logged and not reported; any thread may call.
[[nodiscard]] foundation::Dictionary AddressesAndGroups();

}  // namespace quoll::ExtensionUtilities

#pragma once

#include <string_view>

/// Every name in a group container; docs/container.md says what each is for. Other programs know
/// them: they stay.
namespace quoll::container::layout {

/// The folder of the shared data, in the container.
inline constexpr std::string_view shared_data = "SharedData";
inline constexpr std::string_view shared_data_of_beta = "SharedDataBeta";

/// In the folder of the shared data: the staging folder, which bears the name of the service that
/// fills it, and what the mail application writes.
inline constexpr std::string_view staging = "Share";
inline constexpr std::string_view accounts = "Accounts.plist";
inline constexpr std::string_view contacts = "Contacts";

/// In the folder of the contacts.
inline constexpr std::string_view addresses = "Addresses.plist";
inline constexpr std::string_view groups = "Groups.plist";

/// The folder of the lock files, in the container. In it: the lock by which shares take turns.
inline constexpr std::string_view locks = ".locks";
inline constexpr std::string_view turn = "turn";

/// The folder for what is still being made, in the container. In it: how every name begins.
inline constexpr std::string_view unfinished = ".incoming";
inline constexpr std::string_view unfinished_prefix = ".quoll-incoming-";

}  // namespace quoll::container::layout

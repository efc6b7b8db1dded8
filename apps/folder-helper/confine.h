#pragma once

namespace quoll::folder_helper {

/// Limits the process's memory, time and result, and lets it end with its parent. The first thing
/// that `main` calls.
void limit_resources();

/// Gives up all that packing a folder does not need. From now on the process can read what lies in
/// the folder `folder` and nothing else, follows no symbolic link, and can change, make and start
/// nothing; it may write to what is open. What the kernel does not support is left out in silence;
/// the program that starts the helper reports it.
void confine(int folder);

}  // namespace quoll::folder_helper

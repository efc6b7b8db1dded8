#pragma once

namespace quoll::image_helper {

/// Limits the process's memory, time and result, and lets it end with its parent. The first thing
/// that `main` calls.
void limit_resources();

/// Gives up all that reading an image does not need, so that the bytes of an image cannot do harm:
/// the process can open nothing and start nothing, and works only on memory and on what is open.
/// What the kernel does not support is left out in silence; the program that starts the helpers
/// reports it.
///
/// A forbidden call fails as if the kernel did not know it; the process does not end. So a C
/// library that tries a newer call first still works. It gives an attacker nothing, because no
/// other call helps either.
void confine();

}  // namespace quoll::image_helper

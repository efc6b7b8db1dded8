#pragma once

namespace quoll::image_helper {

/// Limits the process's memory, its time and its result, and ends it with the one that started it.
/// The first thing that it does.
void limit_resources();

/// Gives up what reading an image does not need, for whatever the image's bytes may bring about. As
/// far as the kernel can hold it to that, it opens nothing, starts nothing, and only works on
/// memory and on what is open. What the kernel cannot do is left out without a word: the program
/// that starts helpers tells.
///
/// A call that is not allowed fails as one that the kernel does not know; it does not end the
/// process. So a C library that tries a newer call first still works, and the attacker gains
/// nothing: there is no second call that would help either.
void confine();

}  // namespace quoll::image_helper

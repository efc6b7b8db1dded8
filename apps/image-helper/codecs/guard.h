#pragma once

#include <csetjmp>
#include <cstdio>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

/// Carries a failure over the frames of a C library whose error call must not return: the call
/// jumps back to `run`, which raises `Refused`. No C++ exception passes through C.
class Guard {
 public:
  /// Calls `step`, which calls the library. A step that fails is left where it stands, so it holds
  /// nothing that has to be destroyed.
  template <typename Step>
  void run(const Step& step) {
    // NOLINTNEXTLINE(cert-err52-cpp): the only way out of a C library's error call
    if (setjmp(jump_) != 0) {
      throw Refused(reason_);
    }
    step();
  }

  /// For the library's error call, inside a step only.
  [[noreturn]] void fail(const char* reason) {
    std::snprintf(reason_, sizeof reason_, "%s", reason);
    std::longjmp(jump_, 1);  // NOLINT(cert-err52-cpp): see `run`
  }

 private:
  std::jmp_buf jump_;
  char reason_[256] = {};
};

}  // namespace quoll::image_helper

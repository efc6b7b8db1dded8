#pragma once

#include <csetjmp>
#include <cstdio>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::image_helper {

/// Turns an error of a C library, whose error callback must not return, into `ImageError`. The
/// callback jumps back to `run`, which raises it. So no C++ exception passes through C code.
class Guard {
 public:
  /// Calls `step`, which calls the library. A step that fails is not unwound: it must hold nothing
  /// that has a destructor.
  template <typename Step>
  void run(const Step& step) {
    // NOLINTNEXTLINE(cert-err52-cpp): the only way out of a C library's error call
    if (setjmp(jump_) != 0) {
      throw ImageError(reason_);
    }
    step();
  }

  /// For the library's error callback. Call it only while a step runs.
  [[noreturn]] void fail(const char* reason) {
    std::snprintf(reason_, sizeof reason_, "%s", reason);
    std::longjmp(jump_, 1);  // NOLINT(cert-err52-cpp): see `run`
  }

 private:
  std::jmp_buf jump_;
  char reason_[256] = {};
};

}  // namespace quoll::image_helper

#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "quoll/foundation/object.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// A picture that came as bytes: those of its file, in a sealed memory file. `prepare` makes of it
/// what the extension is given.
class ReceivedPicture final : public foundation::Object {
 public:
  explicit ReceivedPicture(posix::UniqueFd file) : file_(std::move(file)) {}

  [[nodiscard]] int file() const { return file_.get(); }

  [[nodiscard]] std::string_view class_name() const override { return "ReceivedPicture"; }
  [[nodiscard]] std::string description() const override { return "a picture"; }

 private:
  posix::UniqueFd file_;
};

}  // namespace quoll::share

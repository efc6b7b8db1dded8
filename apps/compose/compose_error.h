#pragma once

#include <stdexcept>

namespace quoll::compose {

/// Thrown when a draft cannot be made, or another request not be carried out. `what()` is one
/// sentence for people.
class ComposeError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quoll::compose

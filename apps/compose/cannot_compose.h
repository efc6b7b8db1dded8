#pragma once

#include <stdexcept>

namespace quoll::compose {

/// Why there is no draft, or no answer: one sentence for people.
class CannotCompose final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quoll::compose

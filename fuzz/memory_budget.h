#pragma once

namespace quoll::fuzz {

/// As long as one lives, whoever asks for more memory at one time than a picture may hold stops the
/// run, and whoever asks for more than 16 MB gets `std::bad_alloc`, as from the helper's own limit,
/// so that inputs that claim much are quickly over.
class MemoryBudget {
 public:
  MemoryBudget();
  MemoryBudget(const MemoryBudget&) = delete;
  MemoryBudget& operator=(const MemoryBudget&) = delete;
  ~MemoryBudget();
};

}  // namespace quoll::fuzz

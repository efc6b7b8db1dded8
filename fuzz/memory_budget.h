#pragma once

namespace quoll::fuzz {

/// Limits memory while it lives. Asking for more at one time than a picture may hold stops the run.
/// Asking for more than 16 MB throws `std::bad_alloc`, as the helper's own limit does; so inputs
/// that claim to be large end quickly.
class MemoryBudget {
 public:
  MemoryBudget();
  MemoryBudget(const MemoryBudget&) = delete;
  MemoryBudget& operator=(const MemoryBudget&) = delete;
  ~MemoryBudget();
};

}  // namespace quoll::fuzz

#include "fuzz/memory_budget.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#include "apps/image-helper/codecs/picture.h"
#include "fuzz/require.h"

namespace {

constexpr std::size_t kMostGiven = std::size_t{1} << 24;
bool is_held = false;

}  // namespace

namespace quoll::fuzz {

MemoryBudget::MemoryBudget() {
  is_held = true;
}

MemoryBudget::~MemoryBudget() {
  is_held = false;
}

}  // namespace quoll::fuzz

// This replaces the operator for the whole program.
void* operator new(std::size_t size) {
  quoll::fuzz::require(!is_held || size <= quoll::image_helper::kMostHeldBytes);
  const bool given = !is_held || size <= kMostGiven;
  void* const memory = given ? std::malloc(size == 0 ? 1 : size) : nullptr;
  return memory != nullptr ? memory : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*nothrow*/) noexcept {
  return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

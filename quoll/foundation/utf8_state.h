#pragma once

#include <array>
#include <cstdint>

/// A check for UTF-8 that takes one byte after the other and has no branch.
namespace quoll::foundation::utf8 {

/// What may come next in a text, in the lowest six bits of what `step` answers. Each state is the
/// number of bits by which a row of the table below is shifted to find the state after it.
enum State : std::uint64_t {
  kBoundary = 0,    // between two characters
  kBroken = 6,      // never left again
  kOneMore = 12,    // one more continuation
  kTwoMore = 18,    // two more
  kThreeMore = 24,  // three more
  kAfterE0 = 30,    // two more, the first not overlong
  kAfterED = 36,    // two more, the first no surrogate
  kAfterF0 = 42,    // three more, the first not overlong
  kAfterF4 = 48,    // three more, the first not above U+10FFFF
};

constexpr State after_lead(unsigned byte) {
  if (byte < 0x80) {
    return kBoundary;
  }
  if (byte >= 0xC2 && byte <= 0xDF) {
    return kOneMore;
  }
  if (byte >= 0xE0 && byte <= 0xEF) {
    return byte == 0xE0 ? kAfterE0 : byte == 0xED ? kAfterED : kTwoMore;
  }
  if (byte >= 0xF0 && byte <= 0xF4) {
    return byte == 0xF0 ? kAfterF0 : byte == 0xF4 ? kAfterF4 : kThreeMore;
  }
  return kBroken;
}

constexpr State after(State state, unsigned byte) {
  struct Step {
    State state;
    unsigned low;
    unsigned high;
    State next;
  };
  constexpr Step kSteps[] = {
      {kOneMore, 0x80, 0xBF, kBoundary},  {kTwoMore, 0x80, 0xBF, kOneMore},
      {kThreeMore, 0x80, 0xBF, kTwoMore}, {kAfterE0, 0xA0, 0xBF, kOneMore},
      {kAfterED, 0x80, 0x9F, kOneMore},   {kAfterF0, 0x90, 0xBF, kTwoMore},
      {kAfterF4, 0x80, 0x8F, kTwoMore},
  };
  if (state == kBoundary) {
    return after_lead(byte);
  }
  for (const Step& step : kSteps) {
    if (step.state == state && byte >= step.low && byte <= step.high) {
      return step.next;
    }
  }
  return kBroken;
}

/// For each byte, the state that follows each state, six bits a state: a step is one load, which
/// does not wait for the state, and one shift.
constexpr std::array<std::uint64_t, 256> make_steps() {
  std::array<std::uint64_t, 256> rows{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    for (const State state : {kBoundary, kBroken, kOneMore, kTwoMore, kThreeMore, kAfterE0,
                              kAfterED, kAfterF0, kAfterF4}) {
      rows[byte] |= static_cast<std::uint64_t>(after(state, byte)) << state;
    }
  }
  return rows;
}

[[gnu::visibility("hidden")]] inline constexpr std::array<std::uint64_t, 256> kSteps = make_steps();

/// The state after `byte`. Bits above the lowest six mean nothing.
inline std::uint64_t step(std::uint64_t state, unsigned char byte) {
  return kSteps[byte] >> (state & 63U);
}

inline bool is_boundary(std::uint64_t state) {
  return (state & 63U) == kBoundary;
}
inline bool is_broken(std::uint64_t state) {
  return (state & 63U) == kBroken;
}

}  // namespace quoll::foundation::utf8

#include "apps/compose/draft_name.h"

#include <algorithm>

namespace quoll::compose {
namespace {

bool are_digits(std::string_view text) {
  return !text.empty() &&
         std::ranges::all_of(text, [](char letter) { return letter >= '0' && letter <= '9'; });
}

}  // namespace

bool is_draft_name(std::string_view name) {
  constexpr std::size_t kDay = 8;
  constexpr std::size_t kTime = 15;
  return name.size() >= kTime && are_digits(name.substr(0, kDay)) && name[kDay] == '-' &&
         are_digits(name.substr(kDay + 1, kTime - kDay - 1)) &&
         (name.size() == kTime || (name[kTime] == '-' && are_digits(name.substr(kTime + 1))));
}

bool is_hidden_draft_name(std::string_view name) {
  return name.starts_with('.') && is_draft_name(name.substr(1));
}

}  // namespace quoll::compose

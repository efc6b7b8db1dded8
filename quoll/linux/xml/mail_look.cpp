#include "quoll/linux/xml/mail_look.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <utility>

#include "quoll/linux/xml/markup.h"

namespace quoll::xml {
namespace {

constexpr double kSmallestSize = 6;
constexpr std::uint32_t kBlack = 0x000000;
constexpr std::uint32_t kWhite24 = 0xFFFFFF;
/// The least sum of the differences of red, green and blue at which text can be seen.
constexpr int kLeastDifference = 64;

bool is_name_byte(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
         (byte >= 'A' && byte <= 'Z') || byte == ' ' || byte == '-' || byte == '_' || byte == '.';
}

int component(std::uint32_t colour, unsigned shift) {
  return static_cast<int>((colour >> shift) & 0xFFU);
}

int difference(std::uint32_t a, std::uint32_t b) {
  int sum = 0;
  for (const unsigned shift : {0U, 8U, 16U}) {
    sum += std::abs(component(a, shift) - component(b, shift));
  }
  return sum;
}

std::string points(double size) {
  std::array<char, 32> text{};
  auto* const end =
      std::to_chars(text.data(), text.data() + text.size(), size, std::chars_format::fixed).ptr;
  return std::string(text.data(), end) + "pt";
}

}  // namespace

Look usable_look(Look look, const Look& around) {
  const std::string_view font = look.font.view();
  if (font.empty() || !std::ranges::all_of(font, is_name_byte)) {
    look.font = around.font;
  }
  look.size = look.size > 0 ? std::max(look.size, kSmallestSize) : around.size;
  look.colour = look.colour ? look.colour : around.colour;
  look.background = look.background ? look.background : around.background;
  return look;
}

Look visible_look(Look look) {
  const std::uint32_t background = look.background.value_or(kWhite24);
  if (difference(look.colour.value_or(kBlack), background) < kLeastDifference) {
    const bool dark = difference(background, kBlack) < difference(background, kWhite24);
    look.colour = dark ? kWhite24 : kBlack;
  }
  return look;
}

std::string style_between(const Look& around, bool around_preserved, const Look& look,
                          bool preserved) {
  std::string style;
  const auto declare = [&style](std::string_view property, std::string_view value) {
    style += style.empty() ? "" : "; ";
    style.append(property).append(": ").append(value);
  };
  if (!(look.font == around.font)) {
    declare("font-family", family_text(look.font.view()));
  }
  if (look.size != around.size) {
    declare("font-size", points(look.size));
  }
  if (look.colour != around.colour) {
    declare("color", colour_text(*look.colour));
  }
  if (look.background != around.background) {
    declare("background-color", colour_text(*look.background));
  }
  if (look.bold != around.bold) {
    declare("font-weight", look.bold ? "bold" : "normal");
  }
  if (look.italic != around.italic) {
    declare("font-style", look.italic ? "italic" : "normal");
  }
  if (preserved != around_preserved) {
    declare("white-space", preserved ? "pre-wrap" : "normal");
  }
  return style;
}

}  // namespace quoll::xml

#include "quoll/linux/xml/css.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

#include "quoll/foundation/text.h"
#include "quoll/linux/xml/markup.h"

namespace quoll::xml {
namespace {

constexpr double kDefaultSize = 12;
constexpr double kLargestSize = 1638;
constexpr std::size_t kLongestFamily = 100;

/// The number at the beginning of `text`, and the rest of the text; none when there is no number.
std::optional<std::pair<double, std::string_view>> leading_number(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
  }
  double number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (error != std::errc() || !std::isfinite(number)) {
    return std::nullopt;
  }
  return std::pair(number, std::string_view(stop, static_cast<std::size_t>(end - stop)));
}

std::optional<std::uint32_t> hexadecimal_colour(std::string_view digits) {
  std::uint32_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
  if (error != std::errc() || stop != end || (digits.size() != 3 && digits.size() != 6)) {
    return std::nullopt;
  }
  if (digits.size() == 6) {
    return value;
  }
  return (((value >> 8U) & 0xFU) * 0x110000U) | (((value >> 4U) & 0xFU) * 0x1100U) |
         ((value & 0xFU) * 0x11U);
}

/// The colour in `1, 2, 3` or `1 2 3`. Each component is a number or a percentage. What follows
/// (the alpha) is ignored.
std::optional<std::uint32_t> component_colour(std::string_view list) {
  std::uint32_t colour = 0;
  for (int component = 0; component < 3; ++component) {
    const auto start = list.find_first_not_of(" \t\n\f\r,");
    if (start == std::string_view::npos) {
      return std::nullopt;
    }
    const auto number = leading_number(list.substr(start));
    if (!number) {
      return std::nullopt;
    }
    const bool percent = number->second.starts_with('%');
    const double level = percent ? number->first * 255 / 100 : number->first;
    colour = colour << 8U | static_cast<std::uint32_t>(std::clamp(std::round(level), 0.0, 255.0));
    list = number->second;
    list.remove_prefix(percent ? 1 : 0);
  }
  return colour;
}

std::optional<std::uint32_t> named_colour(std::string_view name) {
  static constexpr std::array<std::pair<std::string_view, std::uint32_t>, 22> kNames{{
      {"aqua", 0x00FFFF},       {"black", 0x000000},   {"blue", 0x0000FF},    {"brown", 0xA52A2A},
      {"cyan", 0x00FFFF},       {"fuchsia", 0xFF00FF}, {"gray", 0x808080},    {"green", 0x008000},
      {"grey", 0x808080},       {"lime", 0x00FF00},    {"magenta", 0xFF00FF}, {"maroon", 0x800000},
      {"navy", 0x000080},       {"olive", 0x808000},   {"orange", 0xFFA500},  {"purple", 0x800080},
      {"red", 0xFF0000},        {"silver", 0xC0C0C0},  {"teal", 0x008080},    {"white", 0xFFFFFF},
      {"windowtext", 0x000000}, {"yellow", 0xFFFF00},
  }};
  const auto* found =
      std::ranges::find(kNames, name, [](const auto& entry) { return entry.first; });
  return found == kNames.end() ? std::nullopt : std::optional(found->second);
}

/// A `font-size` in points; 0 when it cannot be read. It may be relative to `current`, where 0 is
/// the default size.
double css_size(const std::string& value, double current) {
  static constexpr std::array<std::pair<std::string_view, double>, 7> kKeywords{{{"xx-small", 7},
                                                                                 {"x-small", 7.5},
                                                                                 {"small", 10},
                                                                                 {"medium", 12},
                                                                                 {"large", 13.5},
                                                                                 {"x-large", 18},
                                                                                 {"xx-large", 24}}};
  static constexpr std::array<std::pair<std::string_view, double>, 2> kUnits{
      {{"pt", 1}, {"px", 0.75}}};
  const double base = current > 0 ? current : kDefaultSize;
  const std::array<std::pair<std::string_view, double>, 3> relative_units{
      {{"em", base}, {"rem", kDefaultSize}, {"%", base / 100}}};
  if (value == "larger" || value == "smaller") {
    return value == "larger" ? base * 1.2 : base / 1.2;
  }
  const auto pick = [](const auto& table, std::string_view name) {
    const auto* found = std::ranges::find(table, name, [](const auto& row) { return row.first; });
    return found == table.end() ? 0.0 : found->second;
  };
  const auto number = leading_number(value);
  if (!number) {
    return pick(kKeywords, value);
  }
  const std::string_view unit = trim_ascii(number->second);
  const double points = number->first * (pick(kUnits, unit) + pick(relative_units, unit));
  return points > 0 && points <= kLargestSize ? points : 0;
}

/// Whether a `margin` leaves no space below: its third length, or its first when there are fewer.
bool is_close_below(std::string_view margin) {
  std::optional<double> below;
  for (int length = 0; length < 3 && !margin.empty(); ++length) {
    const auto number = leading_number(margin);
    below = length == 1 ? below : number ? std::optional(number->first) : std::nullopt;
    margin = trim_ascii(margin.substr(std::min(margin.find(' '), margin.size())));
  }
  return below == 0.0;
}

void declare(Inherited& inherited, std::string_view property, std::string_view raw) {
  Look& look = inherited.look;
  const std::string value = foundation::ascii_lower_case(raw);
  const auto has = [&value](std::string_view word) {
    return value.find(word) != std::string::npos;
  };
  if (property == "font-weight") {
    const auto weight = leading_number(value);
    look.bold = weight ? weight->first >= 600 : value == "bold" || value == "bolder";
  } else if (property == "font-style") {
    look.italic = has("italic") || has("oblique");
  } else if (property == "text-decoration" || property == "text-decoration-line") {
    look.underline = has("underline");
    look.strikethrough = has("line-through");
  } else if (property == "color") {
    if (const auto colour = parse_colour(value)) {
      look.colour = colour;
    }
  } else if (property == "background-color" || property == "background") {
    if (const auto colour = parse_colour(value); colour || value == "transparent") {
      look.background = colour;
    }
  } else if (property == "font-family") {
    if (auto font = first_family(raw); !font.view().empty()) {
      look.font = std::move(font);
    }
  } else if (property == "font-size") {
    if (const double size = css_size(value, look.size); size > 0) {
      look.size = size;
    }
  } else if (property == "white-space") {
    inherited.preserved = value.starts_with("pre") && value != "pre-line";
  } else if (property == "margin" || property == "margin-bottom") {
    inherited.close = is_close_below(value);
  } else if (property == "display") {
    inherited.hidden = inherited.hidden || value == "none";
  }
}

/// The length of `text` up to the first `separator` outside of quotes and brackets.
std::size_t part_length(std::string_view text, char separator) {
  char quote = 0;
  bool bracket = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char byte = text[at];
    if (byte == '\\') {
      ++at;
    } else if (quote != 0) {
      quote = byte == quote ? '\0' : quote;
    } else if (byte == '"' || byte == '\'') {
      quote = byte;
    } else if (byte == '(' || byte == ')') {
      bracket = byte == '(';
    } else if (byte == separator && !bracket) {
      return at;
    }
  }
  return text.size();
}

}  // namespace

std::string_view trim_ascii(std::string_view text) {
  const auto start = text.find_first_not_of(kWhite);
  if (start == std::string_view::npos) {
    return {};
  }
  return text.substr(start, text.find_last_not_of(kWhite) - start + 1);
}

void apply_style(Inherited& inherited, std::string_view style) {
  while (!style.empty()) {
    const std::string_view declaration = style.substr(0, part_length(style, ';'));
    style.remove_prefix(std::min(declaration.size() + 1, style.size()));
    const auto colon = declaration.find(':');
    if (colon == std::string_view::npos) {
      continue;
    }
    std::string_view value = trim_ascii(declaration.substr(colon + 1));
    if (const auto important = value.rfind('!');
        important != std::string_view::npos &&
        foundation::ascii_lower_case(value.substr(important)) == "!important") {
      value = trim_ascii(value.substr(0, important));
    }
    declare(inherited, foundation::ascii_lower_case(trim_ascii(declaration.substr(0, colon))),
            value);
  }
}

std::optional<std::uint32_t> parse_colour(std::string_view text) {
  const std::string value = foundation::ascii_lower_case(trim_ascii(text));
  if (value.starts_with('#')) {
    return hexadecimal_colour(std::string_view(value).substr(1));
  }
  if (value.starts_with("rgb")) {
    const auto bracket = value.find('(');
    return bracket == std::string::npos
               ? std::nullopt
               : component_colour(std::string_view(value).substr(bracket + 1));
  }
  return named_colour(value);
}

SharedText first_family(std::string_view list) {
  const std::string_view part = trim_ascii(list.substr(0, part_length(list, ',')));
  if (part.size() > kLongestFamily) {
    return {};
  }
  char quote = 0;
  std::string name;
  for (std::size_t at = 0; at < part.size(); ++at) {
    if (part[at] == '\\' && at + 1 < part.size()) {
      name += part[++at];
    } else if (quote == 0 && (part[at] == '"' || part[at] == '\'')) {
      quote = part[at];
    } else if (quote == 0 || part[at] != quote) {
      name += part[at];
    } else {
      break;
    }
  }
  return SharedText(name);
}

double font_element_size(std::string_view text) {
  constexpr std::array<double, 7> kSizes{7.5, 10, 12, 13.5, 18, 24, 36};
  text = trim_ascii(text);
  const auto number = leading_number(text);
  if (!number) {
    return 0;
  }
  const bool relative = text.starts_with('+') || text.starts_with('-');
  const double step = std::clamp(number->first + (relative ? 3 : 0), 1.0, 7.0);
  return kSizes.at(static_cast<std::size_t>(step) - 1);
}

}  // namespace quoll::xml

#include <algorithm>
#include <chrono>
#include <cmath>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/number_text.h"
#include "quoll/foundation/value.h"

namespace quoll::foundation {

namespace {

/// Deeper than this, what is inside is printed as "...": a list may hold itself.
constexpr int kPrintedDepth = 64;
/// Once so much is printed, the rest of every list is "...": one that holds itself twice doubles at
/// each level.
constexpr std::size_t kPrintedBytes = std::size_t{1} << 26U;

void print(const Value& value, int depth, std::string& out);

void print_date(const Date& date, std::string& out) {
  constexpr double kLast = 253402300799.0;   // 9999-12-31 23:59:59
  constexpr double kFirst = -62135596800.0;  // 0001-01-01 00:00:00
  if (!(date.seconds_since_1970 >= kFirst && date.seconds_since_1970 < kLast + 1)) {
    out += text_of_real(date.seconds_since_1970);
    return;
  }
  const auto seconds = static_cast<std::int64_t>(std::floor(date.seconds_since_1970));
  const std::chrono::sys_seconds moment{std::chrono::seconds(seconds)};
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss clock(moment - day);
  const auto add = [&out](auto number, std::size_t digits, const char* after) {
    out.append(padded_number(static_cast<std::uint64_t>(number), digits)).append(after);
  };
  add(static_cast<int>(calendar.year()), 4, "-");
  add(static_cast<unsigned>(calendar.month()), 2, "-");
  add(static_cast<unsigned>(calendar.day()), 2, " ");
  add(clock.hours().count(), 2, ":");
  add(clock.minutes().count(), 2, ":");
  add(clock.seconds().count(), 2, " +0000");
}

void print_bytes(const Bytes& bytes, std::string& out) {
  constexpr std::size_t kShown = 24;
  out += "{length = " + std::to_string(bytes.size()) + ", bytes = 0x";
  for (std::size_t i = 0; i < std::min(bytes.size(), kShown); ++i) {
    out += padded_number(bytes[i], 2, 16);
  }
  out += bytes.size() > kShown ? "...}" : "}";
}

void indent(int depth, std::string& out) {
  out.append(static_cast<std::size_t>(depth) * 4, ' ');
}

void print_list(const List& list, int depth, std::string& out) {
  out += "(\n";
  const char* separator = "";
  for (const Value& element : list) {
    out += separator;
    separator = ",\n";
    indent(depth + 1, out);
    print(element, depth + 1, out);
    if (out.size() > kPrintedBytes) {
      out += separator;
      out += "...";
      break;
    }
  }
  out += list.empty() ? "" : "\n";
  indent(depth, out);
  out += ")";
}

void print_dictionary(const Dictionary& dictionary, int depth, std::string& out) {
  out += "{\n";
  for (const Dictionary::Entry& entry : dictionary) {
    indent(depth + 1, out);
    out += entry.key + " = ";
    print(entry.value, depth + 1, out);
    out += ";\n";
    if (out.size() > kPrintedBytes) {
      out += "...\n";
      break;
    }
  }
  indent(depth, out);
  out += "}";
}

void print(const Value& value, int depth, std::string& out) {
  if (depth > kPrintedDepth) {
    out += "...";
  } else if (const std::string* text = value.text()) {
    out += *text;
  } else if (const bool* boolean = value.boolean()) {
    out += *boolean ? "1" : "0";
  } else if (const std::int64_t* integer = value.integer()) {
    out += std::to_string(*integer);
  } else if (const double* real = value.real()) {
    out += text_of_real(*real);
  } else if (const Date* date = value.date()) {
    print_date(*date, out);
  } else if (const Bytes* bytes = value.bytes()) {
    print_bytes(*bytes, out);
  } else if (const auto list = value.as<List>()) {
    print_list(list, depth, out);
  } else if (const auto dictionary = value.as<Dictionary>()) {
    print_dictionary(dictionary, depth, out);
  } else if (const auto object = value.object()) {
    out += object->description();
  } else {
    out += "(null)";
  }
}

}  // namespace

std::string Value::description() const {
  std::string out;
  print(*this, 0, out);
  return out;
}

}  // namespace quoll::foundation

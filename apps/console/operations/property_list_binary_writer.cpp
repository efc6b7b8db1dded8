#include "apps/console/operations/property_list_binary_writer.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"

namespace quoll::console {

namespace {

using foundation::Dictionary;
using foundation::Value;

/// Appends the lowest `size` bytes of a number, the highest of them first.
void append_number(std::string& out, std::uint64_t number, std::size_t size) {
  while (size-- > 0) {
    out += static_cast<char>(number >> (8 * size) & 0xFFU);
  }
}

/// The number of bytes that a number needs; at least one.
std::size_t size_of(std::uint64_t number) {
  return std::max<std::size_t>(1, (static_cast<std::size_t>(std::bit_width(number)) + 7) / 8);
}

/// The first byte of an object, and its length if that does not fit into the byte.
std::string head(unsigned marker, std::uint64_t count) {
  constexpr std::uint64_t kFollows = 0xF;
  std::string out(1, static_cast<char>(marker << 4U | std::min(count, kFollows)));
  if (count >= kFollows) {
    out += '\x13';  // an integer of eight bytes
    append_number(out, count, 8);
  }
  return out;
}

std::string with_number(unsigned first_byte, std::uint64_t number) {
  std::string out(1, static_cast<char>(first_byte));
  append_number(out, number, 8);
  return out;
}

std::u16string utf16_of(std::string_view utf8) {
  std::u16string out;
  for (std::size_t position = 0; position < utf8.size();) {
    const auto lead = static_cast<unsigned char>(utf8[position]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
    for (const char next : utf8.substr(position + 1, length - 1)) {
      character = character << 6U | (static_cast<unsigned char>(next) & 0x3FU);
    }
    if (character >= 0x10000) {
      out += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10U));
      character = 0xDC00 + (character & 0x3FFU);
    }
    out += static_cast<char16_t>(character);
    position += length;
  }
  return out;
}

std::string text_object(std::string_view text) {
  const bool ascii = std::all_of(text.begin(), text.end(),
                                 [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (ascii) {
    return head(0x5, text.size()).append(text);
  }
  const std::u16string units = utf16_of(text);
  std::string out = head(0x6, units.size());
  for (const char16_t unit : units) {
    append_number(out, unit, 2);
  }
  return out;
}

std::string scalar_object(const Value& value) {
  constexpr double kFirstMomentOf2001 = 978307200;
  if (const bool* boolean = value.boolean()) {
    return *boolean ? "\x09" : "\x08";
  }
  if (const std::int64_t* integer = value.integer()) {
    return with_number(0x13, static_cast<std::uint64_t>(*integer));
  }
  if (const double* real = value.real()) {
    return with_number(0x23, std::bit_cast<std::uint64_t>(*real));
  }
  if (const foundation::Date* date = value.date()) {
    return with_number(0x33,
                       std::bit_cast<std::uint64_t>(date->seconds_since_1970 - kFirstMomentOf2001));
  }
  if (const foundation::Bytes* bytes = value.bytes()) {
    return head(0x4, bytes->size()).append(bytes->begin(), bytes->end());
  }
  foundation::raise_invalid_argument("a property list cannot hold " + std::string(value.kind()));
}

class BinaryWriter {
 public:
  std::string document(const Value& root) {
    add(root);
    const std::size_t reference_size = size_of(objects_.size());
    std::string out = "bplist00";
    std::vector<std::uint64_t> offsets;
    for (const Object& object : objects_) {
      offsets.push_back(out.size());
      out += object.bytes;
      for (const std::size_t part : object.parts) {
        append_number(out, part, reference_size);
      }
    }
    const std::uint64_t table = out.size();
    const std::size_t offset_size = size_of(table);
    for (const std::uint64_t offset : offsets) {
      append_number(out, offset, offset_size);
    }
    out.append(6, '\0');
    append_number(out, offset_size, 1);
    append_number(out, reference_size, 1);
    append_number(out, objects_.size(), 8);
    append_number(out, 0, 8);  // the index of the root
    append_number(out, table, 8);
    return out;
  }

 private:
  struct Object {
    std::string bytes;
    std::vector<std::size_t> parts;
  };

  /// Adds a value and answers the index of its object.
  std::size_t add(const Value& value) {
    if (const std::string* text = value.text()) {
      return add_text(*text);
    }
    const std::size_t number = objects_.size();
    objects_.emplace_back();
    std::string bytes;
    std::vector<std::size_t> parts;
    if (const auto list = value.as<foundation::List>()) {
      bytes = head(0xA, list.count());
      for (const Value& element : list) {
        parts.push_back(add(element));
      }
    } else if (const auto dictionary = value.as<Dictionary>()) {
      bytes = head(0xD, dictionary.count());
      for (const Dictionary::Entry& entry : dictionary) {
        parts.push_back(add_text(entry.key));
      }
      for (const Dictionary::Entry& entry : dictionary) {
        parts.push_back(add(entry.value));
      }
    } else {
      bytes = scalar_object(value);
    }
    objects_[number] = {std::move(bytes), std::move(parts)};
    return number;
  }

  std::size_t add_text(const std::string& text) {
    const auto [known, is_new] = texts_.try_emplace(text, objects_.size());
    if (is_new) {
      objects_.push_back({text_object(text), {}});
    }
    return known->second;
  }

  std::vector<Object> objects_;
  std::map<std::string, std::size_t, std::less<>> texts_;
};

}  // namespace

std::string write_binary_property_list(const Value& root) {
  return BinaryWriter().document(root);
}

}  // namespace quoll::console

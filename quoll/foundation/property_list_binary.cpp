#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/property_list.h"
#include "quoll/foundation/property_list_forms.h"
#include "quoll/foundation/text.h"
#include "quoll/foundation/unicode.h"

namespace quoll::foundation::property_list {

namespace {

/// The kinds of objects: the upper half of the byte with which each begins.
enum Marker : unsigned {
  kSimple = 0x0,
  kInteger = 0x1,
  kReal = 0x2,
  kDate = 0x3,
  kBytes = 0x4,
  kAscii = 0x5,
  kUtf16 = 0x6,
  kList = 0xA,
  kDictionary = 0xD,
};

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;

unsigned byte_of(char c) {
  return static_cast<unsigned char>(c);
}

/// The unsigned number that at most eight bytes are, the first the highest.
std::uint64_t number_of(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) {
    number = number << 8U | byte_of(byte);
  }
  return number;
}

/// Eight bytes are signed, fewer are not. Sixteen are for what eight cannot hold.
Value integer(std::string_view bytes) {
  const std::uint64_t low =
      number_of(bytes.substr(bytes.size() - std::min<std::size_t>(8, bytes.size())));
  if (bytes.size() < 16) {
    return static_cast<std::int64_t>(low);
  }
  const std::uint64_t high = number_of(bytes.substr(0, 8));
  const bool negative = low >> 63U != 0;
  if (high == 0) {
    return value_of_unsigned(low);
  }
  return ~high == 0 && negative ? Value(static_cast<std::int64_t>(low)) : Value();
}

Value real(std::string_view bytes) {
  switch (bytes.size()) {
    case 4:
      return std::bit_cast<float>(static_cast<std::uint32_t>(number_of(bytes)));
    case 8:
      return std::bit_cast<double>(number_of(bytes));
    default:
      return {};
  }
}

/// Dates count from the first moment of 2001.
Value date(std::string_view bytes) {
  constexpr double kFirst = 978307200;
  const Value seconds = bytes.size() == 8 ? real(bytes) : Value();
  const bool is_moment = seconds.real() != nullptr && std::isfinite(*seconds.real());
  return is_moment ? Value(Date{*seconds.real() + kFirst}) : Value();
}

Value simple(unsigned low) {
  constexpr unsigned kFalse = 8;
  constexpr unsigned kTrue = 9;
  return low == kFalse || low == kTrue ? Value(low == kTrue) : Value();
}

Value text(std::string_view bytes) {
  return is_utf8(bytes) ? Value(bytes) : Value();
}

Value utf16(std::string_view bytes) {
  auto text = utf8_of_utf16(bytes, ByteOrder::kBigEndian);
  return text ? Value(std::move(*text)) : Value();
}

/// What is known of an object of the document.
struct Read {
  Value value;               ///< null as long as it is not read
  std::uint32_t values = 1;  ///< how many it is with all inside it, counted at each place
  std::uint16_t height = 1;  ///< how deep it nests
  bool open = false;         ///< being read: a reference to it now comes from inside it
};

class BinaryReader {
 public:
  explicit BinaryReader(std::string_view file) : file_(file) {}

  Value document() {
    Read* const root = read_trailer() ? read(top_, 1) : nullptr;
    return root != nullptr ? std::move(root->value) : Value();
  }

 private:
  bool read_trailer() {
    if (!file_.starts_with(kMagic) || file_.size() < kMagic.size() + kTrailerSize) {
      return false;
    }
    const std::size_t end = file_.size() - kTrailerSize;
    const std::string_view trailer = file_.substr(end);
    offset_size_ = byte_of(trailer[6]);
    reference_size_ = byte_of(trailer[7]);
    const std::uint64_t objects = number_of(trailer.substr(8, 8));
    top_ = number_of(trailer.substr(16, 8));
    const std::uint64_t table = number_of(trailer.substr(24, 8));
    const auto is_size = [](std::size_t size) { return size >= 1 && size <= 8; };
    if (!is_size(offset_size_) || !is_size(reference_size_) || table < kMagic.size() ||
        table > end || objects > kMostObjects || end - table != objects * offset_size_) {
      return false;
    }
    objects_ = file_.substr(0, table);
    offsets_ = file_.substr(table, end - table);
    unread_ = table - kMagic.size();
    read_.resize(objects);
    return true;
  }

  /// The object of that number, made when it is met the first time; null when it is broken or
  /// would lie too deep.
  Read* read(std::uint64_t number, std::size_t depth) {
    if (number >= read_.size() || depth > kPropertyListDepth) {
      return nullptr;
    }
    Read& object = read_[number];
    if (object.value.is_null()) {
      if (object.open) {
        return nullptr;
      }
      object.open = true;
      object.value =
          make(object, number_of(offsets_.substr(number * offset_size_, offset_size_)), depth);
    }
    const bool fits = !object.value.is_null() && depth + object.height - 1 <= kPropertyListDepth;
    return fits ? &object : nullptr;
  }

  /// The next `count` pieces of `size` bytes of an object. Objects lie beside one another: when
  /// they come to more bytes than there are, some overlap, and each could be as long as the file.
  std::optional<std::string_view> take(std::size_t& position, std::uint64_t count,
                                       std::size_t size = 1) {
    if (count > unread_ / size || count * size > objects_.size() - position) {
      return std::nullopt;
    }
    const std::string_view taken = objects_.substr(position, count * size);
    unread_ -= taken.size();
    position += taken.size();
    return taken;
  }

  /// How many bytes, characters or references follow: the lower half of the object's first byte, or
  /// an integer after it.
  std::optional<std::uint64_t> count(std::size_t& position, unsigned low) {
    constexpr unsigned kFollows = 0xF;
    if (low != kFollows) {
      return low;
    }
    const auto head = take(position, 1);
    const unsigned marker = head ? byte_of(head->front()) : 0;
    if (marker >> 4U != kInteger || (marker & 0xFU) > 3) {
      return std::nullopt;
    }
    const auto number = take(position, 1U << (marker & 0xFU));
    return number ? std::optional(number_of(*number)) : std::nullopt;
  }

  Value make(Read& object, std::uint64_t offset, std::size_t depth) {
    if (offset < kMagic.size() || offset >= objects_.size()) {
      return {};
    }
    std::size_t position = offset;
    const auto head = take(position, 1);
    if (!head) {
      return {};
    }
    const unsigned kind = byte_of(head->front()) >> 4U;
    const unsigned low = byte_of(head->front()) & 0xFU;
    switch (kind) {
      case kSimple:
        return simple(low);
      case kInteger:
      case kReal:
      case kDate:
        return number(kind, low, position);
      default:
        return counted(object, kind, low, position, depth);
    }
  }

  Value number(unsigned kind, unsigned low, std::size_t& position) {
    constexpr unsigned kLargest = 4;
    const auto bytes = low <= kLargest ? take(position, 1U << low) : std::nullopt;
    if (!bytes) {
      return {};
    }
    return kind == kInteger ? integer(*bytes) : kind == kReal ? real(*bytes) : date(*bytes);
  }

  Value counted(Read& object, unsigned kind, unsigned low, std::size_t position,
                std::size_t depth) {
    const auto size = size_of_piece(kind);
    const auto pieces = size ? count(position, low) : std::nullopt;
    const auto content = pieces ? take(position, *pieces, *size) : std::nullopt;
    if (!content) {
      return {};
    }
    switch (kind) {
      case kBytes:
        return Bytes(content->begin(), content->end());
      case kAscii:
        return text(*content);
      case kUtf16:
        return utf16(*content);
      case kList:
        return list(object, *content, depth);
      default:
        return dictionary(object, *content, depth);
    }
  }

  [[nodiscard]] std::optional<std::size_t> size_of_piece(unsigned kind) const {
    switch (kind) {
      case kBytes:
      case kAscii:
        return 1;
      case kUtf16:
        return 2;
      case kList:
        return reference_size_;
      case kDictionary:
        return 2 * reference_size_;
      default:
        return std::nullopt;
    }
  }

  /// Follows the reference at `position` of `references` from the object `whole`.
  Read* part(Read& whole, std::string_view references, std::size_t position, std::size_t depth) {
    Read* const found = read(number_of(references.substr(position, reference_size_)), depth + 1);
    if (found != nullptr) {
      whole.height = std::max<std::uint16_t>(whole.height, found->height + 1);
    }
    return found;
  }

  /// Adds to the values inside `whole`; false when they become too many.
  static bool count_in(Read& whole, std::size_t values) {
    whole.values += static_cast<std::uint32_t>(values);
    return whole.values <= kPropertyListValues;
  }

  Value list(Read& whole, std::string_view references, std::size_t depth) {
    std::vector<Value> elements;
    elements.reserve(references.size() / reference_size_);
    for (std::size_t position = 0; position < references.size(); position += reference_size_) {
      const Read* const element = part(whole, references, position, depth);
      if (element == nullptr || !count_in(whole, element->values)) {
        return {};
      }
      elements.push_back(element->value);
    }
    return List(std::move(elements));
  }

  /// The references to all keys come before those to the values.
  Value dictionary(Read& whole, std::string_view references, std::size_t depth) {
    constexpr std::size_t kKeyBytesOfAValue = 64;
    const std::size_t half = references.size() / 2;
    Dictionary entries;
    entries.reserve(half / reference_size_);
    for (std::size_t position = 0; position < half; position += reference_size_) {
      const Read* const key = part(whole, references, position, depth);
      const std::string* const name = key != nullptr ? key->value.text() : nullptr;
      const Read* const value =
          name != nullptr ? part(whole, references, half + position, depth) : nullptr;
      if (value == nullptr || !count_in(whole, value->values + name->size() / kKeyBytesOfAValue)) {
        return {};
      }
      entries.setObject(value->value, *name);
    }
    return entries;
  }

  /// Every value and every key an object of its own.
  static constexpr std::size_t kMostObjects = 2 * kPropertyListValues;

  std::string_view file_;
  std::string_view objects_;  ///< with what stands before them
  std::string_view offsets_;
  std::size_t offset_size_ = 0;
  std::size_t reference_size_ = 0;
  std::uint64_t top_ = 0;
  std::size_t unread_ = 0;  ///< how many bytes objects may still have
  std::vector<Read> read_;
};

}  // namespace

Value read_binary(std::string_view file) {
  return BinaryReader(file).document();
}

}  // namespace quoll::foundation::property_list

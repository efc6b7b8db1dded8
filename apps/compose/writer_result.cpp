#include "apps/compose/writer_result.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "apps/compose/clean_text.h"
#include "apps/compose/compose_error.h"
#include "apps/compose/plain_address.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::compose {
namespace {

/// The end of the file.
struct Record {
  std::array<char, 8> sign;
  std::uint64_t message;  ///< its length in bytes
  std::uint64_t fields;   ///< their length in bytes
  std::uint64_t not_plain;
};

constexpr std::array<char, 8> kSign{'q', 'u', 'o', 'l', 'l', 'e', 'm', 'l'};
/// More than a draft has that came by a bus message.
constexpr std::uint64_t kMostFields = std::uint64_t{128} << 20;
/// A short one takes far more memory than its text.
constexpr std::size_t kMostAddresses = 1'000'000;

[[noreturn]] void refuse() {
  throw ComposeError("what was written of the draft is not as it should be");
}

void append(std::string& out, std::string_view text) {
  out.append(text) += '\0';
}

std::string read_at(int file, std::uint64_t from, std::uint64_t size) {
  std::string bytes(size, '\0');
  for (std::size_t at = 0; at < size;) {
    const ssize_t got = posix::uninterrupted(
        [&] { return pread(file, bytes.data() + at, size - at, static_cast<off_t>(from + at)); });
    if (got <= 0) {
      refuse();
    }
    at += static_cast<std::size_t>(got);
  }
  return bytes;
}

Record record_of(int file) {
  struct stat status {};
  Record record{};
  if (fstat(file, &status) != 0 || status.st_size < static_cast<off_t>(sizeof record)) {
    refuse();
  }
  const std::uint64_t before = static_cast<std::uint64_t>(status.st_size) - sizeof record;
  std::memcpy(&record, read_at(file, before, sizeof record).data(), sizeof record);
  if (record.sign != kSign || record.message > before || record.fields > kMostFields ||
      record.fields != before - record.message) {
    refuse();
  }
  return record;
}

/// Takes texts from the front, each with a zero byte behind it.
class Texts {
 public:
  explicit Texts(std::string_view bytes) : left_(bytes) {}

  std::string take(std::string_view allowed) {
    const std::size_t end = left_.find('\0');
    if (end == std::string_view::npos) {
      refuse();
    }
    const std::string_view text = left_.substr(0, end);
    if (!foundation::is_utf8(text) || !is_clean(text, allowed)) {
      refuse();
    }
    left_.remove_prefix(end + 1);
    return std::string(text);
  }

  /// The addresses up to an empty text.
  std::vector<std::string> take_addresses() {
    std::vector<std::string> addresses;
    for (std::string text = take(""); !text.empty(); text = take("")) {
      if (++addresses_ > kMostAddresses || !is_plain_address(text)) {
        refuse();
      }
      addresses.push_back(std::move(text));
    }
    return addresses;
  }

  [[nodiscard]] bool is_empty() const { return left_.empty(); }

 private:
  std::string_view left_;
  std::size_t addresses_ = 0;  ///< of all lists
};

}  // namespace

void append_fields(int file, const DraftFields& fields) {
  const off_t message = lseek(file, 0, SEEK_CUR);
  std::string bytes;
  append(bytes, fields.subject);
  append(bytes, fields.text);
  for (const auto* list : {&fields.to, &fields.cc, &fields.bcc}) {
    for (const std::string& address : *list) {
      append(bytes, address);
    }
    append(bytes, "");
  }
  const Record record{kSign, static_cast<std::uint64_t>(message), bytes.size(), fields.not_plain};
  bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
  if (message < 0 || !posix::write_all(file, bytes)) {
    throw std::system_error(errno, std::generic_category());
  }
}

DraftFields take_fields(int file) {
  const Record record = record_of(file);
  const std::string_view beginning = kMessageBeginning;
  if (record.message < beginning.size() || read_at(file, 0, beginning.size()) != beginning) {
    refuse();
  }
  const std::string bytes = read_at(file, record.message, record.fields);
  Texts texts(bytes);
  DraftFields fields;
  fields.not_plain = record.not_plain;
  fields.subject = texts.take("");
  if (fields.subject.find("=?") != std::string::npos) {
    refuse();  // a client may decode it
  }
  fields.text = texts.take("\n\t");
  for (auto* list : {&fields.to, &fields.cc, &fields.bcc}) {
    *list = texts.take_addresses();
  }
  if (!texts.is_empty()) {
    refuse();
  }
  if (ftruncate(file, static_cast<off_t>(record.message)) != 0) {
    throw ComposeError("the draft cannot be written: " + posix::error_words(errno));
  }
  return fields;
}

}  // namespace quoll::compose

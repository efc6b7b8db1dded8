#include "tests/cairo/pdf_text.h"

#include <zlib.h>

namespace quoll::test {

namespace {

/// What deflated bytes hold, as far as they can be inflated.
std::string inflated(std::string_view bytes) {
  std::string out(1 << 20, '\0');
  z_stream stream{};
  inflateInit(&stream);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  inflate(&stream, Z_FINISH);
  out.resize(stream.total_out);
  inflateEnd(&stream);
  return out;
}

}  // namespace

std::string pdf_text(std::string_view file) {
  constexpr std::string_view kStream = "\nstream\n";
  std::string text(file);
  for (std::size_t at = file.find(kStream); at != std::string_view::npos;
       at = file.find(kStream, at + 1)) {
    text += inflated(file.substr(at + kStream.size()));
  }
  return text;
}

}  // namespace quoll::test

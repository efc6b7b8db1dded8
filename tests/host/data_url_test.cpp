#include "apps/share/request/data_url.h"

#include <gtest/gtest.h>

#include <vector>

#include "apps/share/request/image_signature.h"
#include "apps/share/request/media_type.h"

namespace quoll::share {
namespace {

TEST(DataUrl, Taken) {
  struct Row {
    const char* reason;
    std::string url;
    std::string media_type;
    std::string bytes;
  };
  const std::vector<Row> rows{
      {"the percent form", "data:text/html,%3Cb%3E", "text/html", "<b>"},
      {"no media type means plain text", "data:,hello", "text/plain", "hello"},
      {"only a parameter means plain text", "data:;charset=utf-8,x", "text/plain", "x"},
      {"parameters are not the type", "data:text/csv;charset=utf-8;header=present,a", "text/csv",
       "a"},
      {"Base64", "data:application/pdf;base64,JVBERg==", "application/pdf", "%PDF"},
      {"Base64 after a parameter", "data:text/plain;charset=utf-8;base64,aGk=", "text/plain", "hi"},
      {"letters of either case", "DATA:Text/HTML;BASE64,aGk=", "text/html", "hi"},
      {"missing padding", "data:;base64,aGk", "text/plain", "hi"},
      {"escaped padding", "data:;base64,aGk%3D", "text/plain", "hi"},
      {"line breaks in Base64", "data:;base64,aG\n k=", "text/plain", "hi"},
      {"the alphabet for URLs", "data:;base64,-_8=", "text/plain", "\xFB\xFF"},
      {"a mark cuts nothing", "data:image/svg+xml,<a b='#c'/>", "image/svg+xml", "<a b='#c'/>"},
      {"a comma in the data", "data:,a,b", "text/plain", "a,b"},
      {"no bytes at all", "data:,", "text/plain", ""},
      {"a zero byte", "data:,%00", "text/plain", std::string(1, '\0')},
  };
  for (const Row& row : rows) {
    const auto read = read_data_url(row.url);
    ASSERT_TRUE(read) << row.reason;
    EXPECT_EQ(read->media_type, row.media_type) << row.reason;
    EXPECT_EQ(read->bytes, row.bytes) << row.reason;
  }
}

TEST(DataUrl, Refused) {
  struct Row {
    const char* reason;
    const char* url;
  };
  const std::vector<Row> rows{
      {"no comma", "data:text/plain;base64"},
      {"another scheme", "date:,x"},
      {"nothing", ""},
      {"a broken escape", "data:,%4"},
      {"no Base64", "data:;base64,a!b="},
      {"one digit is no byte", "data:;base64,A"},
      {"digits after the padding", "data:;base64,aGk=aGk="},
  };
  for (const Row& row : rows) {
    EXPECT_FALSE(read_data_url(row.url)) << row.reason;
  }
}

TEST(MediaType, OfBytes) {
  const std::string cut = std::string(64 * 1024 - 1, 'a') + "\xC3\xA9";
  EXPECT_EQ(media_type_of_bytes("%PDF-1.7"), "application/pdf");
  EXPECT_EQ(media_type_of_bytes("gr\xC3\xBC\xC3\x9F"), "text/plain");
  EXPECT_EQ(media_type_of_bytes(cut), "text/plain") << "a character cut by the limit is no error";
  EXPECT_EQ(media_type_of_bytes("\xFF\xFE"), "") << "not UTF-8";
  EXPECT_EQ(media_type_of_bytes(std::string_view("a\0b", 3)), "") << "a zero byte is no text";
  EXPECT_EQ(extension_of_media_type("text/plain"), "txt");
  EXPECT_EQ(extension_of_media_type("application/x-unheard-of"), "");
}

TEST(ImageSignature, Known) {
  using namespace std::string_view_literals;
  for (const auto begin : {"\x89PNG\r\n\x1a\n...."sv, "\xFF\xD8\xFF\xE0"sv, "GIF89a.."sv,
                           "II*\0...."sv, "MM\0*...."sv, "RIFF\1\2\3\4WEBPVP8 "sv}) {
    EXPECT_TRUE(begins_as_image(begin)) << begin;
  }
  for (const auto begin : {""sv, "\x89PNG"sv, "RIFF\1\2\3\4WAVE"sv, "<svg"sv, "II"sv}) {
    EXPECT_FALSE(begins_as_image(begin)) << begin;
  }
}

}  // namespace
}  // namespace quoll::share

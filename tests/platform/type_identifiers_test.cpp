#include "quoll/platform/type_identifiers.h"

#include <gtest/gtest.h>

namespace quoll::platform {
namespace {

TEST(TypeConformsTo, KnowsUrlsAndImages) {
  EXPECT_TRUE(type_conforms_to("public.url", kUTTypeURL));
  EXPECT_TRUE(type_conforms_to("public.file-url", kUTTypeURL));
  EXPECT_FALSE(type_conforms_to("public.url", kUTTypeFileURL)) << "not the other way round";
  for (const auto type :
       {"public.image", "public.png", "public.jpeg", "public.tiff", "com.compuserve.gif",
        "com.microsoft.bmp", "org.webmproject.webp", "public.webp", "public.heic"}) {
    EXPECT_TRUE(type_conforms_to(type, kUTTypeImage)) << type;
    EXPECT_FALSE(type_conforms_to(type, kUTTypeURL)) << type;
  }
  for (const auto type : {"com.adobe.pdf", "public.movie", "public.plain-text", "", "public"}) {
    EXPECT_FALSE(type_conforms_to(type, kUTTypeImage)) << type;
    EXPECT_FALSE(type_conforms_to(type, kUTTypeURL)) << type;
  }
}

}  // namespace
}  // namespace quoll::platform

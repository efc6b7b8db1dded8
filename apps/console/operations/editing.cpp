#include "quoll/requestutils/url_editing.h"

#include "apps/console/operations/binding.h"
#include "quoll/requestutils/base64_text.h"
#include "quoll/requestutils/url_value.h"

namespace quoll::console {

namespace {

template <auto kFunction>
Operation of_text(std::string name) {
  return instance_operation<kFunction>(std::move(name), "NSString");
}

}  // namespace

std::vector<Operation> editing_operations() {
  namespace Utils = RequestUtils;
  using Text = std::string_view;
  using OptionalText = std::optional<Text>;
  return {
      of_text<Utils::URLFragment>("URLFragment"),
      of_text<Utils::stringByDeletingURLFragment>("stringByDeletingURLFragment"),
      of_text<Utils::stringByAppendingURLFragment>("stringByAppendingURLFragment:"),
      of_text<Utils::stringByDeletingURLQuery>("stringByDeletingURLQuery"),
      of_text<Utils::stringByAppendingURLQuery>("stringByAppendingURLQuery:"),
      of_text<Utils::stringByReplacingURLQueryWithQuery>("stringByReplacingURLQueryWithQuery:"),
      of_text<overload<std::string(Text, OptionalText)>(Utils::stringByMergingURLQuery)>(
          "stringByMergingURLQuery:"),
      of_text<overload<std::string(Text, OptionalText, Utils::URLQueryOptions)>(
          Utils::stringByMergingURLQuery)>("stringByMergingURLQuery:options:"),
      of_text<Utils::lastURLPathComponent>("lastURLPathComponent"),
      of_text<Utils::stringByDeletingLastURLPathComponent>("stringByDeletingLastURLPathComponent"),
      of_text<Utils::stringByAppendingURLPathComponent>("stringByAppendingURLPathComponent:"),
      of_text<Utils::URLPathExtension>("URLPathExtension"),
      of_text<Utils::stringByDeletingURLPathExtension>("stringByDeletingURLPathExtension"),
      of_text<Utils::stringByAppendingURLPathExtension>("stringByAppendingURLPathExtension:"),
      of_text<Utils::URLValue>("URLValue"),
      of_text<Utils::URLValueRelativeToURL>("URLValueRelativeToURL:"),
      of_text<Utils::base64EncodedString>("base64EncodedString"),
      of_text<Utils::base64DecodedString>("base64DecodedString"),
  };
}

}  // namespace quoll::console

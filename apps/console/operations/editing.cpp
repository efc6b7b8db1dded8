#include "quoll/requestutils/url_editing.h"

#include "apps/console/operations/binding.h"
#include "quoll/requestutils/base64_text.h"
#include "quoll/requestutils/url_value.h"

namespace quoll::console {

std::vector<Operation> editing_operations() {
  namespace Utils = RequestUtils;
  using Text = std::string_view;
  using OptionalText = std::optional<Text>;
  return {
      text_operation<Utils::URLFragment>("URLFragment"),
      text_operation<Utils::stringByDeletingURLFragment>("stringByDeletingURLFragment"),
      text_operation<Utils::stringByAppendingURLFragment>("stringByAppendingURLFragment:"),
      text_operation<Utils::stringByDeletingURLQuery>("stringByDeletingURLQuery"),
      text_operation<Utils::stringByAppendingURLQuery>("stringByAppendingURLQuery:"),
      text_operation<Utils::stringByReplacingURLQueryWithQuery>(
          "stringByReplacingURLQueryWithQuery:"),
      text_operation<overload<std::string(Text, OptionalText)>(Utils::stringByMergingURLQuery)>(
          "stringByMergingURLQuery:"),
      text_operation<overload<std::string(Text, OptionalText, Utils::URLQueryOptions)>(
          Utils::stringByMergingURLQuery)>("stringByMergingURLQuery:options:"),
      text_operation<Utils::lastURLPathComponent>("lastURLPathComponent"),
      text_operation<Utils::stringByDeletingLastURLPathComponent>(
          "stringByDeletingLastURLPathComponent"),
      text_operation<Utils::stringByAppendingURLPathComponent>(
          "stringByAppendingURLPathComponent:"),
      text_operation<Utils::URLPathExtension>("URLPathExtension"),
      text_operation<Utils::stringByDeletingURLPathExtension>("stringByDeletingURLPathExtension"),
      text_operation<Utils::stringByAppendingURLPathExtension>(
          "stringByAppendingURLPathExtension:"),
      text_operation<Utils::URLValue>("URLValue"),
      text_operation<Utils::URLValueRelativeToURL>("URLValueRelativeToURL:"),
      text_operation<Utils::base64EncodedString>("base64EncodedString"),
      text_operation<Utils::base64DecodedString>("base64DecodedString"),
  };
}

}  // namespace quoll::console

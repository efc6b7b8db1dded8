#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "quoll/container/group_container.h"
#include "quoll/container/staging.h"
#include "quoll/container/unique_name.h"

namespace quoll::console {

namespace {

using foundation::Value;
constexpr auto kClass = Operation::Level::kClass;

}  // namespace

std::vector<Operation> container_operations() {
  return {
      {"GroupFolderName", "ExtensionUtilities", kClass, 0,
       [](Call&) -> Value { return ExtensionUtilities::GroupFolderName(); }},
      {"GroupPath", "ExtensionUtilities", kClass, 0,
       [](Call&) -> Value { return ExtensionUtilities::GroupPath(); }},
      {"GroupDataPath", "ExtensionUtilities", kClass, 0,
       [](Call&) -> Value { return ExtensionUtilities::GroupDataPath(); }},
      {"ShareInit:", "ExtensionUtilities", kClass, 1,
       [](Call& call) -> Value {
         ExtensionUtilities::ShareInit(text_argument(call.arguments[0]));
         return {};
       }},
      {"ShareFiles:paths:", "ExtensionUtilities", kClass, 2,
       [](Call& call) -> Value {
         return ExtensionUtilities::ShareFiles(text_argument(call.arguments[0]),
                                               list_argument(call.arguments[1]));
       }},
      {"ShareDatas:datas:", "ExtensionUtilities", kClass, 2,
       [](Call& call) -> Value {
         return ExtensionUtilities::ShareDatas(text_argument(call.arguments[0]),
                                               list_argument(call.arguments[1]));
       }},
      {"GetGoodPath:folder:", "NSString", kClass, 2,
       [](Call& call) -> Value {
         return Vorlent_Fs::GetGoodPath(text_argument(call.arguments[0]),
                                        text_argument(call.arguments[1]));
       }},
  };
}

}  // namespace quoll::console

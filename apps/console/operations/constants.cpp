#include "apps/console/operations/constants.h"

#include <algorithm>
#include <iterator>

#include "quoll/container/group_container.h"
#include "quoll/foundation/error.h"
#include "quoll/message/command_launcher.h"
#include "quoll/platform/links.h"
#include "quoll/platform/type_identifiers.h"
#include "quoll/requestutils/url_components.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::console {

namespace {

struct Constant {
  std::string_view name;
  foundation::Value value;
};

}  // namespace

std::optional<foundation::Value> constant(std::string_view name) {
  static const Constant kConstants[] = {
      {"commandArchive", commandArchive},
      {"commandDelete", commandDelete},
      {"commandReply", commandReply},
      {"commandMessage", commandMessage},
      {"commandCompose", commandCompose},
      {"commandSend", commandSend},
      {"commandOpen", commandOpen},
      {"it_vorlent_quoll", it_vorlent_quoll},
      {"it_vorlent_quoll_beta8", it_vorlent_quoll_beta8},
      {"it_vorlent_quoll_beta10", it_vorlent_quoll_beta10},
      {"it_vorlent_quoll_beta11", it_vorlent_quoll_beta11},
      {"it_vorlent_quoll_2", it_vorlent_quoll_2},
      {"it_vorlent_quoll_pro", it_vorlent_quoll_pro},
      {"ACTION_CALLED_EXTENSION", ACTION_CALLED_EXTENSION},
      {"application_group", ExtensionUtilities::application_group},
      {"URLQueryKeepLastValue", std::uint32_t{RequestUtils::URLQueryKeepLastValue}},
      {"URLQueryKeepFirstValue", std::uint32_t{RequestUtils::URLQueryKeepFirstValue}},
      {"URLQueryCollectValues", std::uint32_t{RequestUtils::URLQueryCollectValues}},
      {"URLQueryAlwaysArrays", std::uint32_t{RequestUtils::URLQueryAlwaysArrays}},
      {"URLQueryBracketArrayKeys", std::uint32_t{RequestUtils::URLQueryBracketArrayKeys}},
      {"URLSchemeComponent", RequestUtils::URLSchemeComponent},
      {"URLHostComponent", RequestUtils::URLHostComponent},
      {"URLPortComponent", RequestUtils::URLPortComponent},
      {"URLUserComponent", RequestUtils::URLUserComponent},
      {"URLPasswordComponent", RequestUtils::URLPasswordComponent},
      {"URLPathComponent", RequestUtils::URLPathComponent},
      {"URLParameterStringComponent", RequestUtils::URLParameterStringComponent},
      {"URLQueryComponent", RequestUtils::URLQueryComponent},
      {"URLFragmentComponent", RequestUtils::URLFragmentComponent},
      {"NSTextCheckingTypeLink", platform::NSTextCheckingTypeLink},
      {"kUTTypeURL", platform::kUTTypeURL},
      {"kUTTypeImage", platform::kUTTypeImage},
      {"NSCocoaErrorDomain", foundation::NSCocoaErrorDomain},
  };
  const auto* found = std::find_if(std::begin(kConstants), std::end(kConstants),
                                   [&](const Constant& one) { return one.name == name; });
  return found == std::end(kConstants) ? std::nullopt : std::optional(found->value);
}

}  // namespace quoll::console

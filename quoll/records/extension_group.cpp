#include "quoll/records/extension_group.h"

#include <array>

#include "quoll/foundation/format.h"
#include "quoll/platform/bundle.h"
#include "quoll/records/dictionary_reading.h"
#include "quoll/records/extension_address.h"

namespace quoll {

namespace {

using foundation::List;
using foundation::Value;
using records::Field;

Value no_name() {
  return platform::NSBundle::mainBundle()->localizedStringForKey("No Name", "");
}

constexpr std::array group_fields{
    Field<ExtensionGroup>{"idx", &ExtensionGroup::idx, records::empty_text},
    Field<ExtensionGroup>{"name", &ExtensionGroup::name, no_name},
};

}  // namespace

std::shared_ptr<ExtensionGroup> ExtensionGroup::make() {
  return std::make_shared<ExtensionGroup>(foundation::Passkey<ExtensionGroup>());
}

std::shared_ptr<ExtensionGroup> ExtensionGroup::initWithDictonary(const Value& dictionary) {
  return records::guarded(make(), [&](ExtensionGroup& group) {
    records::fill(group, dictionary, group_fields);
    List members;
    group.addresses = members;
    for (const Value& element : dictionary.objectForKey("addresses").list()) {
      members.addObject(ExtensionAddress::initWithDictonary(element));
    }
  });
}

std::string ExtensionGroup::prettyprint() const {
  const auto members = addresses();
  if (!members.empty()) {
    return foundation::format("%@ (%@)", name(), members.count());
  }
  return foundation::format("%@", name());
}

std::string ExtensionGroup::description() const {
  return foundation::format("ExtensionGroup %@", name());
}

}  // namespace quoll

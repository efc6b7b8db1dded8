#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>

#include "apps/console/commands.h"
#include "apps/console/output.h"
#include "apps/console/program_desktop.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/collections.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/printable.h"
#include "quoll/platform/coordinator.h"
#include "quoll/platform/files.h"

namespace quoll::console {

namespace {

namespace layout = container::layout;
using foundation::Bytes;
using foundation::Dictionary;
using foundation::Error;
using foundation::List;
using foundation::NSURL;
using foundation::Value;

template <typename... Values>
Value list(const Values&... values) {
  return List{values...};
}

Value alias(const char* mail, const char* name, const char* account) {
  return Dictionary{{"mail", mail}, {"name", name}, {"account", account}};
}

Value account(const char* mail, const char* name, int type, bool enabled, const Value& aliases) {
  return Dictionary{
      {"mail", mail}, {"name", name}, {"type", type}, {"enabled", enabled}, {"aliases", aliases}};
}

Value address(const char* mail, const char* first, const char* last, const char* company,
              const char* nickname, int rank) {
  return Dictionary{{"mail", mail},       {"firstName", first},   {"lastName", last},
                    {"company", company}, {"nickname", nickname}, {"rank", rank}};
}

Value group(const char* idx, const char* name, const Value& addresses) {
  return Dictionary{{"idx", idx}, {"name", name}, {"addresses", addresses}};
}

Value accounts() {
  return list(account("ann.lee@example.org", "Ann Lee", 1, true,
                      list(alias("ann@example.org", "Ann", "ann.lee@example.org"),
                           alias("office@example.org", "The Office", "ann.lee@example.org"))),
              account("a.lee@work.example.com", "A. Lee (Work & Co.)", 3, true, list()),
              account("old@example.net", "An old account", 2, false, list()));
}

Value zoe() {
  return address("zoe@example.org", "Zo\xC3\xAB", "M\xC3\xBCller", "", "zo", 7);
}

Value acme() {
  return address("sales@acme.example", "", "", "Acme", "", 1);
}

Value addresses() {
  return list(zoe(), acme(),
              address("ken@example.jp", "\xE5\x81\xA5", "\xE7\x94\xB0\xE4\xB8\xAD", "", "", 4),
              address("nobody@example.org", "", "", "", "", 0));
}

Value groups() {
  return list(group("1", "Friends", list(zoe())), group("2", "Trade", list(acme())));
}

/// Writes a file to the shared data as the mail application does: while no other program accesses
/// it, and in one step.
std::optional<Error> store(const std::shared_ptr<NSURL>& folder, std::string_view name,
                           const Value& content, PropertyListForm form) {
  const std::string document = write_property_list(content, form);
  const auto files = platform::NSFileManager::defaultManager();
  if (auto error = files->createDirectoryAtURL(folder)) {
    return error;
  }
  std::optional<Error> failure;
  auto error = platform::NSFileCoordinator::create()->coordinateWritingItemAtURL(
      foundation::URLByAppendingPathComponent(folder, name),
      platform::NSFileCoordinatorWritingForDeleting, [&](const std::shared_ptr<NSURL>& location) {
        const std::string path = location->file_system_path().value_or("");
        failure = files->writeToFile(Bytes(document.begin(), document.end()), path,
                                     platform::NSDataWritingAtomic);
        if (!failure) {
          std::cout << foundation::printable(path) << '\n';
        }
      });
  return error ? error : failure;
}

std::optional<Error> store_all(const std::shared_ptr<NSURL>& data, PropertyListForm form) {
  const auto contacts = foundation::URLByAppendingPathComponent(data, layout::contacts);
  auto error = store(data, layout::accounts, accounts(), form);
  if (!error) {
    error = store(contacts, layout::addresses, addresses(), form);
  }
  return error ? error : store(contacts, layout::groups, groups(), form);
}

}  // namespace

int sample_container(const std::string& folder, PropertyListForm form) {
  // All parts that look for the container, also the coordinator with its locks, read this variable.
  std::error_code unknown;
  ::setenv("QUOLL_GROUP_CONTAINERS", std::filesystem::absolute(folder, unknown).c_str(), 1);
  const platform::ScopedDesktop desktop(reading_desktop());
  if (const auto error = store_all(ExtensionUtilities::GroupDataPath(), form)) {
    return complain(foundation::text_of(*error));
  }
  return finish();
}

}  // namespace quoll::console

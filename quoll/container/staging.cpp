#include "quoll/container/staging.h"

#include <cerrno>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "quoll/container/coordinated_access.h"
#include "quoll/container/group_container.h"
#include "quoll/container/unique_name.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/text.h"
#include "quoll/platform/files.h"
#include "quoll/platform/log.h"

namespace quoll::ExtensionUtilities {

namespace {

using foundation::Bytes;
using foundation::Error;
using foundation::List;
using foundation::NSURL;
using foundation::Value;

/// Logs what was done to the staging folder in vain.
void log_failure(foundation::Pattern<1> pattern, foundation::QuollErrorCode code,
                 const Error& error) {
  platform::log_event({foundation::format(pattern, error), foundation::quoll_error(code, error)});
}

/// Staging deletes what is named.
bool is_one_folder(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

/// Runs the accessor with the staging folder of that name while nobody else works on it. What goes
/// wrong, a name that is not one folder in the shared data among it, is logged by `failure_line`.
void with_staging_folder(std::string_view name, foundation::Pattern<1> failure_line,
                         const std::function<void(const std::shared_ptr<NSURL>&)>& accessor) {
  if (!is_one_folder(name)) {
    Error refused = foundation::file_error(EINVAL, name, true);
    refused.text = foundation::format("“%@” is not the name of one folder.", name);
    log_failure(failure_line, foundation::kNotCoordinatedError, refused);
    return;
  }
  container::with_coordinated_access(foundation::URLByAppendingPathComponent(GroupDataPath(), name),
                                     failure_line, accessor);
}

/// What tells the two ways of staging apart.
struct StagingKind {
  /// The name that an item wants.
  std::string (*file_name)(const Value& item);
  /// Puts the item there; answers why that failed.
  std::optional<Error> (*write)(const Value& item, const std::string& path);
  foundation::Pattern<1> item_failure;
  foundation::Pattern<1> exception;
  foundation::Pattern<1> coordination_failure;
};

List stage(std::string_view folder, const List& items, const StagingKind& kind) {
  List written;
  with_staging_folder(
      folder, kind.coordination_failure, [&](const std::shared_ptr<NSURL>& location) {
        try {
          container::UniqueNames names(foundation::file_system_path(location).value_or(""));
          // The caller may go on adding to the list while files are copied.
          for (const Value& item : items.copy()) {
            const std::string path = names.good_path(kind.file_name(item));
            if (const auto error = kind.write(item, path)) {
              platform::log(kind.item_failure, *error);
            } else {
              written.addObject(path);
            }
          }
        } catch (const foundation::NSException& exception) {
          platform::log(kind.exception, exception);
        }
      });
  return written;
}

/// The path of a file to copy; anything but a text raises.
const std::string& source_path(const Value& item) {
  const std::string* path = item.stringValue();
  return *path;  // a list holds no nulls
}

std::string last_component(const Value& item) {
  return foundation::utf8_with_escapes(foundation::last_path_component(source_path(item)));
}

std::optional<Error> copy(const Value& item, const std::string& path) {
  return platform::NSFileManager::defaultManager()->copyItemAtPath(source_path(item), path);
}

std::string image_name(const Value& /*item*/) {
  return "image.png";
}

std::optional<Error> write_buffer(const Value& item, const std::string& path) {
  const Bytes* data = item.bytes();
  if (data == nullptr) {
    foundation::raise_invalid_argument("writeToFile:options:error: was asked of " +
                                       std::string(item.kind()));
  }
  return platform::NSFileManager::defaultManager()->writeToFile(*data, path,
                                                                platform::NSDataWritingAtomic);
}

}  // namespace

void ShareInit(std::string_view folder) {
  with_staging_folder(folder, "shareInit %@", [](const std::shared_ptr<NSURL>& location) {
    const auto files = platform::NSFileManager::defaultManager();
    auto error = files->removeItemAtURL(location);
    if (error) {
      log_failure("shareInit delete %@", foundation::kNotPreparedError, *error);
    }
    if (auto failure = files->createDirectoryAtURL(location)) {
      error = std::move(failure);
    }
    // The removal's error is still there when the creation
    // succeeds: the first share on a machine writes two lines.
    if (error) {
      log_failure("shareInit create %@", foundation::kNotPreparedError, *error);
    }
  });
}

List ShareFiles(std::string_view folder, const List& paths) {
  return stage(folder, paths,
               {.file_name = last_component,
                .write = copy,
                .item_failure = "Error writing file shareFiles %@",
                .exception = "Exception shareFiles %@",
                .coordination_failure = "Error shareFiles %@"});
}

List ShareDatas(std::string_view folder, const List& datas) {
  return stage(folder, datas,
               {.file_name = image_name,
                .write = write_buffer,
                .item_failure = "Error writing file shareDatas %@",
                .exception = "Exception shareDatas %@",
                .coordination_failure = "Error shareDatas %@"});
}

}  // namespace quoll::ExtensionUtilities

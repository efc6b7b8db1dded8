#pragma once

#include <set>
#include <string>
#include <utility>

#include "quoll/platform/forwarding_files.h"

namespace quoll::share {

/// A file manager that moves the files which the host has prepared when they are to be copied, or
/// when bytes are to be written that are nothing but the path of one. What cannot be moved is
/// copied, and so is everything else. Any thread may call.
class MovingFiles final : public platform::ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;

  /// From now on the file at this path, and no other, may be moved. To be called before others
  /// call.
  void add_prepared(std::string path) { prepared_.insert(std::move(path)); }
  [[nodiscard]] bool is_prepared(std::string_view path) const { return prepared_.contains(path); }

  std::optional<foundation::Error> copyItemAtPath(std::string_view source,
                                                  std::string_view destination) override;
  std::optional<foundation::Error> writeToFile(const foundation::Bytes& data, std::string_view path,
                                               platform::NSDataWritingOptions options) override;

 private:
  std::set<std::string, std::less<>> prepared_;
};

}  // namespace quoll::share

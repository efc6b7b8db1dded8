#include "quoll/host/print_workspace.h"

#include <cerrno>

#include "quoll/host/file_handle.h"
#include "quoll/platform/log.h"

namespace quoll::host {

namespace {

class PrintWorkspace final : public platform::NSWorkspace {
 public:
  explicit PrintWorkspace(int descriptor) : descriptor_(descriptor) {}

  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view /*application*/, unsigned /*options*/) override {
    for (const auto& url : urls) {
      if (!write_all(descriptor_, url->absoluteString()) || !write_all(descriptor_, "\n")) {
        platform::log("openURLs %@", "the URL cannot be written: " + error_words(errno));
        return false;
      }
    }
    return true;
  }

 private:
  int descriptor_;
};

}  // namespace

std::shared_ptr<platform::NSWorkspace> printer(int descriptor) {
  return std::make_shared<PrintWorkspace>(descriptor);
}

}  // namespace quoll::host

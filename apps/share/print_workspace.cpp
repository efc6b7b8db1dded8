#include "apps/share/print_workspace.h"

#include <cerrno>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/platform/log.h"

namespace quoll::share {

namespace {

class PrintWorkspace final : public platform::NSWorkspace {
 public:
  explicit PrintWorkspace(int descriptor) : descriptor_(descriptor) {}

  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view /*application*/,
                platform::NSWorkspaceLaunchOptions /*options*/) override {
    for (const auto& url : urls) {
      if (!posix::write_all(descriptor_, url->absoluteString()) ||
          !posix::write_all(descriptor_, "\n")) {
        platform::log_reason("openURLs", foundation::quoll_error(foundation::kNotOpenedError,
                                                                 "the URL cannot be written: " +
                                                                     posix::error_words(errno)));
        return false;
      }
    }
    return true;
  }

 private:
  int descriptor_;
};

}  // namespace

std::shared_ptr<platform::NSWorkspace> make_print_workspace(int descriptor) {
  return std::make_shared<PrintWorkspace>(descriptor);
}

}  // namespace quoll::share

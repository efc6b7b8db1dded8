#include <cerrno>

#include "quoll/foundation/error.h"
#include "quoll/platform/desktop.h"

namespace quoll::platform {

namespace {

using foundation::Bytes;
using foundation::Error;
using foundation::NSURL;

Error no_such_file(std::string_view path, bool writing) {
  return foundation::file_error(ENOENT, path, writing);
}

Error no_such_file(const std::shared_ptr<NSURL>& url) {
  return no_such_file(foundation::file_system_path(url).value_or(""), true);
}

class NoBundle final : public NSBundle {
 public:
  foundation::Dictionary infoDictionary() const override { return {}; }
  std::string localizedStringForKey(std::string_view key, std::string_view value) const override {
    return std::string(key.empty() || value.empty() ? key : value);
  }
};

class NoFiles final : public NSFileManager {
 public:
  std::shared_ptr<NSURL> containerURLForSecurityApplicationGroupIdentifier(
      std::string_view /*group*/) override {
    return nullptr;
  }
  std::optional<Error> removeItemAtURL(const std::shared_ptr<NSURL>& url) override {
    return no_such_file(url);
  }
  std::optional<Error> createDirectoryAtURL(const std::shared_ptr<NSURL>& url) override {
    return no_such_file(url);
  }
  std::optional<Error> copyItemAtPath(std::string_view source,
                                      std::string_view /*destination*/) override {
    return no_such_file(source, true);
  }
  bool fileExistsAtPath(std::string_view /*path*/) override { return false; }
  bool isDirectoryAtPath(std::string_view /*path*/) override { return false; }
  std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(
      std::string_view /*path*/) override {
    return std::nullopt;
  }
  FileContents contentsAtPath(std::string_view path) override { return no_such_file(path, false); }
  std::optional<Error> writeToFile(const Bytes& /*data*/, std::string_view path,
                                   NSDataWritingOptions /*options*/) override {
    return no_such_file(path, true);
  }
  std::string currentDirectoryPath() override { return {}; }
};

class NoCoordinator final : public NSFileCoordinator {
 public:
  std::optional<Error> coordinateWritingItemAtURL(
      const std::shared_ptr<NSURL>& url, NSFileCoordinatorWritingOptions /*options*/,
      const std::function<void(const std::shared_ptr<NSURL>&)>& /*accessor*/) override {
    return no_such_file(url);
  }
};

class NoWorkspace final : public NSWorkspace {
 public:
  bool openURLs(const std::vector<std::shared_ptr<NSURL>>& /*urls*/,
                std::string_view /*application*/, NSWorkspaceLaunchOptions /*options*/) override {
    return false;
  }
};

class NoLog final : public Log {
 public:
  void write(const LogEvent& /*event*/) override {}
};

class NoQueue final : public Queue {
 public:
  void async(QueuePriority /*priority*/, std::function<void()> /*block*/) override {}
};

class NoClock final : public Clock {
 public:
  void sleep(double /*seconds*/) override {}
  foundation::Date now() override { return {}; }
};

class NoImages final : public Images {
 public:
  std::optional<Size> size(const Bytes& /*file*/) override { return std::nullopt; }
  std::optional<Bytes> convert(const Bytes& /*file*/, BitmapImageFileType /*type*/) override {
    return std::nullopt;
  }
};

class NoStyledText final : public StyledText {
 public:
  std::shared_ptr<NSAttributedString> from_html(std::string_view /*html*/) override {
    return nullptr;
  }
  std::optional<Bytes> to_html(const NSAttributedString& /*text*/) override { return std::nullopt; }
};

class NoDateFormatter final : public NSDateFormatter {
 public:
  std::string stringFromDate(foundation::Date /*date*/) const override { return {}; }
  std::optional<foundation::Date> dateFromString(std::string_view /*text*/) const override {
    return std::nullopt;
  }
};

class NoDates final : public Dates {
 public:
  std::shared_ptr<NSDateFormatter> formatter(const DateFormatterSettings& /*settings*/) override {
    return std::make_shared<NoDateFormatter>();
  }
};

class NoLinks final : public Links {
 public:
  std::vector<std::string> find(std::string_view /*text*/) override { return {}; }
};

}  // namespace

Desktop empty_desktop() {
  return {.bundle = std::make_shared<NoBundle>(),
          .files = std::make_shared<NoFiles>(),
          .coordinator = [] { return std::make_unique<NoCoordinator>(); },
          .workspace = std::make_shared<NoWorkspace>(),
          .notifications = make_notification_center(),
          .log = std::make_shared<NoLog>(),
          .queue = std::make_shared<NoQueue>(),
          .clock = std::make_shared<NoClock>(),
          .images = std::make_shared<NoImages>(),
          .styled_text = std::make_shared<NoStyledText>(),
          .dates = std::make_shared<NoDates>(),
          .links = std::make_shared<NoLinks>()};
}

}  // namespace quoll::platform

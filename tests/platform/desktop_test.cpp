#include "quoll/platform/desktop.h"

#include <gtest/gtest.h>

#include "quoll/view/view_controller.h"
#include "tests/support/recorders.h"

namespace quoll::platform {
namespace {

using foundation::Bytes;
using foundation::Error;
using foundation::NSURL;
using foundation::Value;

TEST(EmptyDesktop, HasNothingAndSaysSo) {
  const ScopedDesktop scoped({});
  EXPECT_TRUE(main_bundle_identifier().is_null());
  EXPECT_EQ(NSBundle::mainBundle()->localizedStringForKey("No Name", ""), "No Name");
  EXPECT_EQ(NSBundle::mainBundle()->localizedStringForKey("No Name", "other"), "other");
  EXPECT_EQ(NSBundle::mainBundle()->localizedStringForKey("", "other"), "");

  const auto files = NSFileManager::defaultManager();
  const auto url = NSURL::file_url("/a", false);
  EXPECT_EQ(files->containerURLForSecurityApplicationGroupIdentifier("g"), nullptr);
  EXPECT_FALSE(files->fileExistsAtPath("/"));
  EXPECT_EQ(files->contentsOfDirectoryAtPath("/"), std::nullopt);
  EXPECT_EQ(files->currentDirectoryPath(), "");
  EXPECT_FALSE(files->isDirectoryAtPath("/"));
  EXPECT_TRUE(files->removeItemAtURL(url));
  EXPECT_TRUE(files->removeItemAtURL(nullptr));
  EXPECT_TRUE(files->createDirectoryAtURL(url));
  EXPECT_TRUE(files->copyItemAtPath("/a", "/b"));
  EXPECT_TRUE(std::holds_alternative<Error>(files->contentsAtPath("/a")));
  EXPECT_TRUE(files->writeToFile({}, "/a", NSDataWritingAtomic));
  EXPECT_TRUE(NSFileCoordinator::create()->coordinateWritingItemAtURL(
      url, NSFileCoordinatorWritingForDeleting, [](const auto&) { FAIL(); }));

  EXPECT_FALSE(NSWorkspace::sharedWorkspace()->openURLs({url}, "a", {}));
  EXPECT_EQ(NSImage::initWithData({1}), nullptr);
  EXPECT_EQ(NSAttributedString("a").html_document(), std::nullopt);
  bool ran = false;
  dispatch_async(QueuePriority::kDefault, [&] { ran = true; });
  EXPECT_FALSE(ran);
  sleep_for_time_interval(1e9);
  log_line("to nobody");
}

TEST(ScopedDesktop, PutsBackWhatWasThere) {
  const auto outer = std::make_shared<test::RecordingLog>();
  const auto inner = std::make_shared<test::RecordingLog>();
  const ScopedDesktop first({.log = outer});
  log("%@", "one");
  {
    const ScopedDesktop second({.log = inner});
    log("%@", "two");
  }
  log("%@", "three");
  EXPECT_EQ(outer->lines(), (std::vector<std::string>{"one", "three"}));
  EXPECT_EQ(inner->lines(), std::vector<std::string>{"two"});
}

TEST(Images, GoThroughTheInstalledReader) {
  class Echo final : public Images {
   public:
    std::optional<Size> size(const Bytes& /*file*/) override { return Size{3, 2}; }
    std::optional<Bytes> convert(const Bytes& file, BitmapImageFileType type) override {
      Bytes out = file;
      out.push_back(static_cast<unsigned char>(type));
      return out;
    }
  };
  const ScopedDesktop scoped({.images = std::make_shared<Echo>()});
  const auto image = NSImage::initWithData({7});
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->width(), 3);
  EXPECT_EQ(image->height(), 2);
  EXPECT_FALSE(image->flipped);
  EXPECT_EQ(image->description(), "NSImage 3x2");
  EXPECT_EQ(image->TIFFRepresentation(), (Bytes{7, 0}));
  EXPECT_EQ(NSBitmapImageRep::imageRepWithData(Bytes{7})->representationUsingType(
                BitmapImageFileType::NSBitmapImageFileTypePNG),
            (Bytes{7, 4}))
      << "PNG is type 4";
  EXPECT_FALSE(NSBitmapImageRep::imageRepWithData(std::nullopt));
  EXPECT_FALSE(NSBitmapImageRep::imageRepWithData(Bytes{}));
}

TEST(StyledText, IsTheTextOfItsRuns) {
  const NSAttributedString text({{"bold", {.bold = true}}, {" plain", {}}});
  EXPECT_EQ(text.string(), "bold plain");
  EXPECT_EQ(text.length(), 10U);
  EXPECT_EQ(text.description(), "bold plain");
  EXPECT_TRUE(text.isEqual(&text));
  const NSAttributedString plain("bold plain");
  EXPECT_FALSE(text.isEqual(&plain)) << "another look";
  const NSAttributedString empty("");
  EXPECT_EQ(empty.runs().size(), 0U);
}

TEST(NSViewController, LoadsItsViewOnce) {
  struct Counting : NSViewController {
    void loadView() override {
      calls += "load ";
      NSViewController::loadView();
    }
    void viewDidLoad() override { calls += "did "; }
    std::string calls;
  } controller;
  const auto view = controller.view();
  EXPECT_NE(view, nullptr);
  EXPECT_EQ(controller.view(), view);
  EXPECT_EQ(controller.calls, "load did ");
  EXPECT_EQ(controller.nibName(), "");
}

}  // namespace
}  // namespace quoll::platform

// A thousand attachments that answer on many threads, some of them when nobody waits any more.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <latch>
#include <set>
#include <thread>

#include "quoll/container/staging.h"
#include "quoll/linux/posix/thread_pool.h"
#include "quoll/platform/queue.h"
#include "quoll/share/item_gatherer.h"
#include "tests/share/scripted_share.h"

namespace quoll {
namespace {

using foundation::NSURL;
using foundation::Value;

constexpr int kAttachments = 1000;
constexpr int kLate = 50;
constexpr int kThreads = 8;

/// Who is asked for what, by the number of the attachment.
enum class Kind { kFile, kLink, kImage, kFailing };

bool is_late(int number) {
  return number >= kAttachments - kLate;
}
Kind kind_of(int number) {
  const int place = number % 10;
  return place < 6   ? Kind::kFile
         : place < 8 ? Kind::kLink
         : place < 9 ? Kind::kImage
                     : Kind::kFailing;
}

/// Providers' own threads: each takes the next block there is.
class Threads {
 public:
  Threads() {
    for (int i = 0; i < kThreads; ++i) {
      threads_.emplace_back([this] { serve(); });
    }
  }
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;
  ~Threads() {
    {
      const std::lock_guard lock(mutex_);
      ending_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) {
      thread.join();
    }
  }

  void add(std::function<void()> block) {
    {
      const std::lock_guard lock(mutex_);
      blocks_.push_back(std::move(block));
    }
    changed_.notify_one();
  }

 private:
  void serve() {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [this] { return ending_ || !blocks_.empty(); });
      if (blocks_.empty()) {
        return;
      }
      const auto block = std::move(blocks_.front());
      blocks_.pop_front();
      lock.unlock();
      block();
      lock.lock();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> blocks_;
  bool ending_ = false;
  std::vector<std::thread> threads_;
};

class ThousandAttachments : public testing::Test {
 protected:
  /// The last sleep lets the late ones go, so that they answer while the command is made.
  ThousandAttachments()
      : share_([this](int sleep) {
          if (sleep == 1) {
            prompt_.wait();
          } else if (sleep == 101) {
            end_of_wait_.count_down();
          }
        }) {}

  Value content(int number) {
    const std::string text = std::to_string(number);
    switch (kind_of(number)) {
      case Kind::kFile:
        std::filesystem::create_directory(share_.folder.path(text));
        return NSURL::file_url(
            share_.folder.write(text + "/name" + std::to_string(number % 40) + ".txt", text),
            false);
      case Kind::kLink:
        return NSURL::URLWithString("http://h/" + text);
      case Kind::kImage:
        return test::bytes_of(text);
      case Kind::kFailing:
        return nullptr;
    }
    return nullptr;
  }

  void answer(int number, const platform::NSItemProvider::CompletionHandler& handler) {
    if (kind_of(number) == Kind::kFailing) {
      handler(nullptr, foundation::Error{"Host", 1, "gone", {}});
    } else {
      handler(contents_[static_cast<std::size_t>(number)], {});
    }
    (is_late(number) ? late_ : prompt_).count_down();
  }

  std::shared_ptr<platform::NSItemProvider> provider(int number) {
    const Kind kind = kind_of(number);
    const bool is_image = kind == Kind::kImage;
    const std::string type = kind == Kind::kFile ? "public.file-url"
                             : is_image          ? "public.image"
                                                 : "public.url";
    return std::make_shared<test::ScriptedProvider>(type, [this, number](const auto& handler) {
      if (is_late(number)) {
        late_threads_.add([this, number, handler] {
          end_of_wait_.wait();
          answer(number, handler);
        });
      } else if (number % 2 == 0) {
        platform::dispatch_async(platform::QueuePriority::kDefault,
                                 [this, number, handler] { answer(number, handler); });
      } else {
        prompt_threads_.add([this, number, handler] { answer(number, handler); });
      }
    });
  }

  std::latch prompt_{kAttachments - kLate};
  std::latch late_{kLate};
  std::latch end_of_wait_{1};
  test::ShareTest share_;
  std::vector<Value> contents_;
  Threads prompt_threads_;
  Threads late_threads_;
};

std::set<std::string> staged(const ExtensionMessage& message) {
  std::set<std::string> contents;
  for (const Value& path : message.attachments()) {
    contents.insert(test::read_file(*path.text()));
  }
  return contents;
}

/// What has to be there of the attachments, by their contents: all of them, or the prompt ones
/// only.
std::set<std::string> wanted(bool with_late) {
  std::set<std::string> contents;
  for (int number = 0; number < kAttachments; ++number) {
    const Kind kind = kind_of(number);
    if ((kind == Kind::kFile || kind == Kind::kImage) && (with_late || !is_late(number))) {
      contents.insert((kind == Kind::kImage ? "PNG of " : "") + std::to_string(number));
    }
  }
  return contents;
}

TEST_F(ThousandAttachments, NoneIsLostAndTheLateOnesDisturbNothing) {
  platform::NSExtensionItem::Attachments attachments;
  for (int number = 0; number < kAttachments; ++number) {
    contents_.push_back(content(number));
    attachments.push_back(provider(number));
  }
  auto item = std::make_shared<platform::NSExtensionItem>();
  item->attachments = std::move(attachments);
  std::shared_ptr<ExtensionMessage> message;
  std::shared_ptr<ExtensionMessage> sent;
  {
    auto desktop = *platform::current_desktop();
    desktop.queue = posix::make_thread_pool();
    const platform::ScopedDesktop with_pool(std::move(desktop));
    ExtensionUtilities::ShareInit("Share");
    std::latch done(1);
    ExtensionUtilities::GetItemForExtension(
        std::make_shared<test::ScriptedContext>(platform::NSExtensionContext::Items{item}), "Share",
        [&](const auto& gathered, const auto&) {
          sent = ExtensionMessage::ExtensionMessageWithUrl(gathered->queryUrl("compose"));
          message = gathered;
          done.count_down();
        });
    done.wait();
    late_.wait();
  }
  EXPECT_EQ(share_.clock->sleeps().size(), 101U);
  const auto in_time = wanted(false);
  const auto reported = staged(*sent);
  EXPECT_TRUE(std::ranges::includes(reported, in_time)) << reported.size() << " were reported";
  EXPECT_EQ(staged(*message), wanted(true));
  const std::string body = message->htmlBody().description();
  for (int number = 0; number < kAttachments; ++number) {
    if (kind_of(number) == Kind::kLink) {
      EXPECT_NE(body.find(">http://h/" + std::to_string(number) + "<"), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace quoll

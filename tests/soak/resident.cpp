// A program that stays: it gathers, stages, makes the command and reads the stores through the
// library, round after round, in a folder of its own beside the one in which shares are staged.
//   soak_resident FOLDER
// Each round is one line, "round FILES BYTES RECORDS" or "loss WHAT". Ends with its standard input.
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <set>
#include <stdexcept>

#include "apps/share/counting_queue.h"
#include "apps/share/moving_files.h"
#include "apps/share/prepare.h"
#include "apps/share/request/selection.h"
#include "apps/share/run.h"
#include "quoll/container/accounts_store.h"
#include "quoll/container/contacts_store.h"
#include "quoll/container/staging.h"
#include "quoll/linux/image_helper/images.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/linux/posix/steady_clock.h"
#include "quoll/linux/posix/thread_pool.h"
#include "quoll/platform/desktop.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"
#include "quoll/share/item_gatherer.h"

namespace {

using namespace quoll;

constexpr const char* kService = "Resident";
constexpr const char* kPicture =
    "data:image/"
    "png;base64,iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9"
    "awAAAABJRU5ErkJggg==";

/// Something that was promised and did not happen.
class Loss : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::string content_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw Loss(path + " is not there");
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

class Resident {
 public:
  explicit Resident(std::string folder)
      : folder_(std::move(folder)),
        queue_(std::make_shared<share::CountingQueue>(posix::make_thread_pool())),
        staged_by_(std::make_shared<share::MovingFiles>(posix::make_file_manager())),
        desktop_({.bundle = posix::make_program_bundle("it.vorlent.quoll2.Quoll-Share"),
                  .files = staged_by_,
                  .coordinator = posix::coordinator_factory(),
                  .queue = queue_,
                  .clock = posix::make_clock(),
                  .images = image_helper::make_images(image_helper::helper_path())}) {}

  void round() {
    const auto items = new_items();
    share::Selection selection = share::make_selection({"A title", {}, {}, items}, std::nullopt);
    static_cast<void>(share::prepare(selection, *staged_by_, image_helper::helper_path()));
    const auto message = gathered(selection);
    check_staged(*ExtensionMessage::ExtensionMessageWithUrl(message->queryUrl("compose")));
    const std::size_t records = check(ExtensionUtilities::Accounts(), last_accounts_) +
                                check(ExtensionUtilities::AddressesAndGroups()
                                          .objectForKey("addresses")
                                          .as<foundation::List>(),
                                      last_addresses_);
    std::cout << "round " << files_.size() + 1 << ' ' << bytes_ << ' ' << records << std::endl;
  }

 private:
  /// Three new files of one name, a link and a picture.
  std::vector<std::string> new_items() {
    std::vector<std::string> items{"https://example.org/", kPicture};
    files_.clear();
    bytes_ = 0;
    for (int number = 0; number < 3; ++number) {
      const std::string path = folder_ + "/" + std::to_string(number) + "/a name.txt";
      std::filesystem::create_directories(std::filesystem::path(path).parent_path());
      std::string content(random_() % 100'000, '\0');
      for (char& byte : content) {
        byte = static_cast<char>(random_());
      }
      std::ofstream(path, std::ios::binary) << content;
      bytes_ += content.size();
      files_.insert(std::move(content));
      items.push_back(path);
    }
    return items;
  }

  std::shared_ptr<ExtensionMessage> gathered(share::Selection& selection) {
    std::shared_ptr<ExtensionMessage> message;
    ExtensionUtilities::ShareInit(kService);
    ExtensionUtilities::GetItemForExtension(
        share::make_context(selection), kService,
        [&](const auto& gathered, const auto&) { message = gathered; });
    share::wait_until_done(selection, *queue_);
    if (!message) {
      throw Loss("the completion was not called");
    }
    return message;
  }

  void check_staged(const ExtensionMessage& message) const {
    std::multiset<std::string> found;
    std::size_t pictures = 0;
    for (const auto& path : message.attachments()) {
      std::string content = content_of(*path.text());
      if (content.starts_with("\x89PNG")) {
        ++pictures;
      } else {
        found.insert(std::move(content));
      }
    }
    if (found != files_ || pictures != 1) {
      throw Loss(std::to_string(found.size()) + " files and " + std::to_string(pictures) +
                 " pictures were staged, or their bytes are others");
    }
  }

  /// Each record of a store says which writing it is of and how many records that has. Answers how
  /// many there are.
  static std::size_t check(const foundation::List& records, long long& last) {
    long long writing = 0;
    std::size_t count = 0;
    for (const auto& record : records) {
      const auto account = record.as<ExtensionAccount>();
      const auto address = record.as<ExtensionAddress>();
      const foundation::Value mark = account ? account->name() : address->firstName();
      long long own = 0;
      if (mark.text() == nullptr ||
          std::sscanf(mark.text()->c_str(), "%lld %zu", &own, &count) != 2 ||
          (writing != 0 && own != writing)) {
        throw Loss("records of two writings in one reading");
      }
      writing = own;
    }
    if (records.count() != count || writing < last) {
      throw Loss("a reading of " + std::to_string(records.count()) + " of " +
                 std::to_string(count) + " records, or one that is older than the last");
    }
    last = writing;
    return count;
  }

  std::string folder_;
  std::shared_ptr<share::CountingQueue> queue_;
  std::shared_ptr<share::MovingFiles> staged_by_;
  platform::ScopedDesktop desktop_;
  std::mt19937 random_{1};
  std::multiset<std::string> files_;
  std::size_t bytes_ = 0;
  long long last_accounts_ = 0;
  long long last_addresses_ = 0;
};

bool input_has_ended() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, 0) != 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  Resident resident(argv[1]);
  while (!input_has_ended()) {
    try {
      resident.round();
    } catch (const std::exception& exception) {
      std::cout << "loss " << exception.what() << std::endl;
      return 1;
    }
  }
  return 0;
}

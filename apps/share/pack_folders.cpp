#include "apps/share/pack_folders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/share/interruption.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/subprocess.h"
#include "quoll/platform/log.h"

namespace quoll::share {

namespace {

using foundation::NSURL;

/// What the helper says when it has written all.
constexpr std::string_view kPacked = "packed\n";

std::string path_of(const SharedItem& item) {
  return foundation::file_system_path(item.value().as<NSURL>()).value_or("");
}

std::uint64_t size_of(int file) {
  struct stat status {};
  return fstat(file, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

class FolderPacker {
 public:
  FolderPacker(Selection& selection, const Packing& packing)
      : selection_(selection), packing_(packing) {}

  bool run() {
    std::vector<std::shared_ptr<SharedItem>> kept;
    for (auto& item : std::exchange(selection_.items, {})) {
      if (!item->is_folder() || pack(*item)) {
        kept.push_back(std::move(item));
      }
      if (Interruption::has_come()) {
        return false;
      }
    }
    selection_.items = std::move(kept);
    return true;
  }

 private:
  bool pack(SharedItem& item) {
    std::string why = "it cannot be packed: ";
    std::string logged_as = why + "the helper says why";
    if (!selection_.prepared_files) {
      why = logged_as = why + "there is no shared folder";
    } else {
      const auto failure = pack_into_file(item);
      if (!failure) {
        return true;
      }
      why += *failure;
    }
    platform::log("prepare %@", logged_as);
    selection_.left_out.push_back({item.given(), std::move(why), std::move(logged_as)});
    return false;
  }

  /// Answers the reason when there is no file.
  std::optional<std::string> pack_into_file(SharedItem& item) {
    const std::string path = path_of(item);
    const std::string_view last = foundation::last_path_component(path);
    const std::string name(last == "/" ? "folder" : last);
    const posix::UniqueFd folder =
        posix::above_standard_streams(posix::open_file(path, O_RDONLY | O_DIRECTORY | O_NONBLOCK));
    if (!folder) {
      return posix::error_words(errno);
    }
    auto [made, zip] = selection_.prepared_files->make(name + ".zip");
    const posix::UniqueFd file = posix::above_standard_streams(std::move(made));
    if (!file) {
      return posix::error_words(errno);
    }
    packing_.note(foundation::printable(name) + " is a folder and is shared as " +
                  foundation::printable(name) + ".zip");
    auto failure = run_helper(folder.get(), file.get(), name);
    if (failure) {
      unlink(zip.c_str());  // it takes room until the share ends
    } else {
      item.answer_with(NSURL::file_url(zip, false));
    }
    return failure;
  }

  std::optional<std::string> run_helper(int folder, int file, const std::string& name) {
    constexpr std::size_t kMostTold = 8192;
    posix::Subprocess helper(
        {.words = {packing_.helper, "zip", foundation::utf8_with_escapes(name)},
         .input = folder,
         .output = file});
    if (const int number = helper.start_error()) {
      return "the helper cannot be started: " + posix::error_words(number);
    }
    std::string told;
    std::uint64_t written = 0;
    const auto go_on = [&] {
      told += helper.errors(kMostTold - told.size());
      if (const std::uint64_t size = size_of(file); size != std::exchange(written, size)) {
        packing_.progress(size);
      }
      return told.size() < kMostTold && !Interruption::has_come();
    };
    if (const int trouble = helper.end_by(std::chrono::steady_clock::time_point::max(), go_on)) {
      return trouble == ECANCELED ? "the helper was ended"
                                  : "the helper cannot be watched: " + posix::error_words(trouble);
    }
    told += helper.errors(kMostTold);
    if (!helper.ended_well() || !told.ends_with(kPacked)) {
      return told.empty() ? "the helper has ended"
                          : foundation::printable(told.substr(0, told.find('\n')));
    }
    told.resize(told.size() - kPacked.size());
    leave_out(told);
    return std::nullopt;
  }

  /// Reads a line for each thing in the folder that is not packed: why, a TAB, and its name.
  void leave_out(std::string_view told) {
    while (!told.empty()) {
      const std::string_view line = told.substr(0, told.find('\n'));
      const std::size_t tab = std::min(line.find('\t'), line.size());
      selection_.left_out.push_back({std::string(line.substr(std::min(tab + 1, line.size()))),
                                     foundation::printable(line.substr(0, tab)),
                                     "it lies in a folder and cannot be packed"});
      told.remove_prefix(std::min(line.size() + 1, told.size()));
    }
  }

  Selection& selection_;
  const Packing& packing_;
};

}  // namespace

std::optional<std::string> note_about_size(const Selection& selection) {
  constexpr std::uint64_t kMostOfAMail = 25'000'000;
  constexpr std::uint64_t kMegabyte = 1'000'000;
  std::uint64_t bytes = 0;
  for (const auto& item : selection.items) {
    struct stat status {};
    const std::string path = path_of(*item);
    if (!path.empty() && stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
      bytes += static_cast<std::uint64_t>(status.st_size);
    }
  }
  return bytes <= kMostOfAMail
             ? std::nullopt
             : std::optional("the files have " +
                             std::to_string((bytes + kMegabyte - 1) / kMegabyte) +
                             " MB in all; mail servers often refuse more than 25 MB");
}

bool pack_folders(Selection& selection, const Packing& packing) {
  return FolderPacker(selection, packing).run();
}

}  // namespace quoll::share

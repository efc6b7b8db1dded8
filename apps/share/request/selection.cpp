#include "apps/share/request/selection.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

#include "apps/share/interruption.h"
#include "apps/share/received_picture.h"
#include "apps/share/request/data_url.h"
#include "apps/share/request/image_signature.h"
#include "apps/share/request/media_type.h"
#include "apps/share/request/received_bytes.h"
#include "apps/share/request/resolve_item.h"
#include "apps/share/request/resolve_link.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/gio/remote_files.h"
#include "quoll/linux/image_helper/memory_file.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"
#include "quoll/platform/type_identifiers.h"

namespace quoll::share {

namespace {

using foundation::NSURL;

constexpr std::string_view kStandardInput = "-";
constexpr std::string_view kList = "the list on standard input";
constexpr const char* kNoRoom = "it is too large, together with the items before it";
/// No command URL holds more, and the text may come from a pipe without an end.
constexpr std::size_t kLongestText = std::size_t{64} << 20;

/// The part of a name behind the last "/"; empty when it cannot name a file.
std::string_view file_name(std::string_view name) {
  name.remove_prefix(name.rfind('/') + 1);
  return name == "." || name == ".." ? std::string_view() : name;
}

/// Adds the usual extension of the type to a name that has none, if there is room for it.
std::string with_extension(std::string name, std::string_view media_type) {
  const std::string_view extension = extension_of_media_type(media_type);
  if (name.find('.') == std::string::npos && !extension.empty() &&
      name.size() + 1 + extension.size() <= NAME_MAX) {
    name.append(".").append(extension);
  }
  return name;
}

std::string why_not_received() {
  return errno == ETIMEDOUT ? "nothing came for too long" : posix::error_words(errno);
}

/// Parts of any bytes but zero, each ended by a zero byte; the last one may go without.
class ZeroEndedList {
 public:
  explicit ZeroEndedList(std::string bytes) : bytes_(std::move(bytes)) {}

  /// The next part; none behind the last.
  [[nodiscard]] std::optional<std::string> next() {
    if (position_ >= bytes_.size()) {
      return std::nullopt;
    }
    const std::size_t end = std::min(bytes_.find('\0', position_), bytes_.size());
    const std::size_t begin = std::exchange(position_, end + 1);
    return bytes_.substr(begin, end - begin);
  }

 private:
  std::string bytes_;
  std::size_t position_ = 0;
};

/// Fills a selection part by part. Standard input is read in the order of the calls.
class Selector {
 public:
  Selector(Selection& selection, const ShareRequest& request, int standard_input)
      : selection_(selection),
        read_timeout_(request.read_timeout),
        budget_(request.byte_budget),
        standard_input_(standard_input) {}

  /// The text itself, or what standard input delivers; none when it cannot be shared.
  std::optional<std::string> text(const std::optional<std::string>& given, std::string_view what) {
    if (!given) {
      return std::nullopt;
    }
    auto text = given == kStandardInput ? text_from_input() : given;
    if (!text) {
      leave_out(what, list_ ? "standard input ends before it" : posix::error_words(errno));
    } else if (text->size() > kLongestText) {
      leave_out(what, "it is longer than 64 MiB");
      text.reset();
    } else if (!foundation::is_utf8(*text)) {
      leave_out(what, "it is not UTF-8");
      text.reset();
    } else if (text->empty()) {
      leave_out(what, "it is empty");
      text.reset();
    }
    return text;
  }

  /// The recipients themselves, or what the list delivers for them.
  std::vector<std::string> recipients(const std::vector<std::string>& given) {
    std::vector<std::string> out;
    for (const std::string& one : given) {
      const auto address = one == kStandardInput && list_ ? list_->next() : one;
      const std::string why =
          address ? why_no_recipient(*address) : "standard input ends before it";
      if (why.empty()) {
        out.push_back(*address);
      } else {
        leave_out("the recipient " + foundation::printable(address.value_or("")), why);
      }
    }
    return out;
  }

  /// Reads the list on standard input. When that fails, the list is left out and counts as empty.
  void read_list() {
    constexpr std::size_t kLongestList = std::size_t{256} << 20;
    auto bytes = read_at_most(standard_input_, kLongestList + 1);
    if (!bytes) {
      leave_out(kList, posix::error_words(errno));
    } else if (bytes->size() > kLongestList) {
      leave_out(kList, "it is longer than 256 MiB");
      bytes.reset();
    } else if (bytes->empty()) {
      leave_out(kList, "it is empty");
    }
    list_.emplace(std::move(bytes).value_or(""));
  }

  /// Adds what the list still holds.
  void add_list() {
    while (const auto part = list_ ? list_->next() : std::nullopt) {
      add_named(*part);
    }
  }

  void add(DescriptorItem item) {
    // A file that was just written may stand at its end. A pipe has no position; that is no
    // failure.
    static_cast<void>(lseek(item.descriptor.get(), 0, SEEK_SET));
    const std::string_view name = file_name(item.name);
    const std::size_t taken = add_received(name.empty() ? "an item without a name" : name,
                                           {item.descriptor.get(), read_timeout_, budget_},
                                           item.media_type, name, "item");
    budget_ -= taken;
  }

  void add_link(const std::string& link) { add_resolved(link, resolve_link(link)); }

  void add(const std::string& given) {
    if (given == kStandardInput) {
      add_standard_input();
    } else {
      add_named(given);
    }
  }

 private:
  std::optional<std::string> text_from_input() {
    return list_ ? list_->next() : read_at_most(standard_input_, kLongestText + 1);
  }

  void add_named(const std::string& given) {
    if (const auto scheme = link_scheme(given); scheme == "data" && why_not_shareable(given)) {
      add_data_url(given);
    } else {
      add_resolved(given, resolve_item(given, [this](const std::string& url) {
                     return remote_.local_path(url);
                   }));
    }
  }

  void add_resolved(const std::string& given, const ResolvedItem& resolved) {
    if (resolved.url) {
      add_url(given, resolved.url);
    } else {
      const std::string advice = resolved.advice.empty() ? "" : "; " + resolved.advice;
      leave_out(given, resolved.refusal + advice, resolved.refusal);
    }
  }

  void leave_out(std::string_view what, std::string why, std::string logged_as = {}) {
    selection_.left_out.push_back({std::string(what), std::move(why), std::move(logged_as)});
  }

  void add_item(std::string_view given, std::string_view type, foundation::Value value) {
    selection_.items.push_back(std::make_shared<SharedItem>(std::string(given), type,
                                                            std::move(value), selection_.answers));
  }

  void add_url(std::string_view given, const std::shared_ptr<NSURL>& url) {
    add_item(given, url->isFileURL() ? platform::kUTTypeFileURL : platform::kUTTypeURL, url);
  }

  void add_image(std::string_view given, posix::UniqueFd image) {
    image_helper::seal(image.get());
    add_item(given, platform::kUTTypeImage, std::make_shared<ReceivedPicture>(std::move(image)));
  }

  void add_image_data(std::string_view given, const std::string& bytes) {
    if (posix::UniqueFd image = make_image_file(bytes)) {
      add_image(given, std::move(image));
    } else {
      leave_out(given, posix::error_words(errno));
    }
  }

  void add_standard_input() {
    add_received("standard input", {standard_input_}, "", "", "standard-input");
  }

  /// Answers how many bytes were taken.
  std::size_t add_received(std::string_view given, const ByteSource& source,
                           std::string_view media_type, std::string_view name,
                           std::string_view name_without_one) {
    auto received = read_beginning(source);
    const std::size_t held = received ? received->size : 0;
    if (held == 0) {
      leave_out(given, received ? "it is empty" : why_not_received());
      return 0;
    }
    if (name.empty() && received->is_whole && held <= source.limit && received->image) {
      add_image(given, std::move(received->image));
      return held;
    }
    return add_bytes(given, name.empty() ? name_without_one : name,
                     media_type.empty() ? media_type_of_bytes(received->beginning) : media_type,
                     *received, source);
  }

  void add_data_url(const std::string& given) {
    constexpr std::size_t kShown = 40;
    const std::string name = given.size() > kShown ? given.substr(0, kShown) + "..." : given;
    auto data = read_data_url(given);
    if (!data) {
      leave_out(name, "the data: URL is damaged");
    } else if (data->media_type.starts_with("image/") && begins_as_image(data->bytes)) {
      add_image_data(name, data->bytes);
    } else {
      const std::size_t size = data->bytes.size();
      add_bytes(name, "data", data->media_type, {std::move(data->bytes), {}, size, true}, {});
    }
  }

  /// Writes bytes to a file of the share and adds it like any other file. Answers how many they
  /// are.
  std::size_t add_bytes(std::string_view given, std::string_view name, std::string_view media_type,
                        const ReceivedBytes& bytes, const ByteSource& source) {
    const std::string cannot = "it cannot be kept in a temporary file: ";
    if (!selection_.prepared_files) {
      leave_out(given, cannot + "there is no shared folder");
      return 0;
    }
    const auto [file, path] =
        selection_.prepared_files->make(with_extension(std::string(name), media_type));
    const auto size = file ? write_received(bytes, source, file.get()) : std::nullopt;
    if (!size) {
      leave_out(given, errno == EOVERFLOW ? kNoRoom : cannot + why_not_received());
      unlink(path.c_str());  // what is there of it takes room until the share ends
      return 0;
    }
    add_url(given, NSURL::file_url(path, false));
    return *size;
  }

  Selection& selection_;
  std::chrono::milliseconds read_timeout_;
  std::size_t budget_;  ///< how many bytes may still come from descriptors
  int standard_input_;
  std::optional<ZeroEndedList> list_;
  gio::RemoteFiles remote_{gio::kMountTimeOut, [] { return !Interruption::has_come(); }};
};

/// Drops a text that only repeats a link or the title. Menus of browsers hand over both.
void drop_repeated_text(Selection& selection) {
  if (!selection.text) {
    return;
  }
  const std::string_view text = foundation::trim(*selection.text);
  const bool is_title = selection.title && text == foundation::trim(*selection.title);
  const bool is_repeated = std::ranges::any_of(selection.items, [&](const auto& item) {
    const bool is_link = item->type() == platform::kUTTypeURL;  // only then the title is shown
    return is_link && (is_title || text == foundation::trim(item->given()));
  });
  if (is_repeated) {
    selection.text.reset();
  }
}

/// The title of a link becomes the subject, so the subject is the title.
void settle_subject(Selection& selection) {
  auto& subject = selection.envelope.subject;
  if (!subject) {
    subject = selection.title;
  } else if (const auto title = std::exchange(selection.title, subject);
             title && title != subject) {
    selection.left_out.push_back({"the title", "the draft has another subject"});
  }
}

}  // namespace

Selection make_selection(ShareRequest request, const std::optional<std::string>& container,
                         int standard_input) {
  Selection selection;
  selection.left_out = std::move(request.left_out);
  if (container) {
    selection.prepared_files.emplace(*container);
  }
  Selector selector(selection, request, standard_input);
  if (request.has_list) {
    selector.read_list();
  }
  selection.title = selector.text(request.title, "the title");
  selection.envelope.subject = selector.text(request.envelope.subject, "the subject");
  selection.text = selector.text(request.text, "the text");
  selection.html = selector.text(request.html, "the HTML text");
  selection.envelope.to = selector.recipients(request.envelope.to);
  selection.envelope.cc = selector.recipients(request.envelope.cc);
  selection.envelope.bcc = selector.recipients(request.envelope.bcc);
  for (const std::string& item : request.items) {
    selector.add(item);
  }
  selector.add_list();
  for (const std::string& link : request.links) {
    selector.add_link(link);
  }
  for (DescriptorItem& item : request.descriptor_items) {
    selector.add(std::move(item));
  }
  if (request.is_from_menu) {
    drop_repeated_text(selection);
  }
  settle_subject(selection);
  return selection;
}

}  // namespace quoll::share

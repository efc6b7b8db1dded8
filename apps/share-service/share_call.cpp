#include "apps/share-service/share_call.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <cerrno>
#include <climits>
#include <string_view>

#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share_service {

namespace {

using gio::VariantHandle;

constexpr std::size_t kMostItems = 64;         // each is a descriptor, and a file
constexpr std::size_t kMostRecipients = 1000;  // each is an argument of a command line

/// What is wrong; none when all is well.
using Complaint = std::optional<std::string>;

Complaint wrong_type(std::string_view key, const char* type) {
  return "\"" + std::string(key) + "\" is not of the type " + type;
}

/// Reads the entries of a dictionary one by one; `take` is called with each key and its value.
template <typename Take>
Complaint each_entry(GVariant* dictionary, const Take& take) {
  for (gsize at = 0; at < g_variant_n_children(dictionary); ++at) {
    const char* key = nullptr;
    GVariant* value = nullptr;
    g_variant_get_child(dictionary, at, "{&sv}", &key, &value);
    const VariantHandle owner(value);
    if (auto complaint = take(std::string_view(key), value)) {
      return complaint;
    }
  }
  return std::nullopt;
}

template <typename Text>
Complaint take_text(std::string_view key, GVariant* value, Text& text) {
  if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) == FALSE) {
    return wrong_type(key, "s");
  }
  // Programs give an empty one for none.
  if (const char* const given = g_variant_get_string(value, nullptr); *given != '\0') {
    text = given;
  }
  return std::nullopt;
}

Complaint take_uris(GVariant* value, std::vector<std::string>& uris) {
  if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING_ARRAY) == FALSE) {
    return wrong_type("uris", "as");
  }
  const gsize count = g_variant_n_children(value);
  if (auto complaint = too_many_uris(uris.size() + count)) {
    return complaint;
  }
  for (gsize at = 0; at < count; ++at) {
    const char* uri = nullptr;
    g_variant_get_child(value, at, "&s", &uri);
    uris.emplace_back(uri);
  }
  return std::nullopt;
}

Complaint take_recipients(std::string_view key, GVariant* value,
                          std::vector<std::string>& recipients) {
  if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING_ARRAY) == FALSE) {
    return wrong_type(key, "as");
  }
  const gsize count = g_variant_n_children(value);
  if (const std::size_t all = recipients.size() + count; all > kMostRecipients) {
    return std::to_string(all) + " recipients in \"" + std::string(key) + "\", and " +
           std::to_string(kMostRecipients) + " are the most";
  }
  for (gsize at = 0; at < count; ++at) {
    const char* address = nullptr;
    g_variant_get_child(value, at, "&s", &address);
    if (const std::string why = share::why_no_recipient(address); !why.empty()) {
      return "the recipient \"" + foundation::printable(address) + "\": " + why;
    }
    recipients.emplace_back(address);
  }
  return std::nullopt;
}

Complaint take_bytes(GVariant* value, posix::UniqueFd& descriptor) {
  if (g_variant_is_of_type(value, G_VARIANT_TYPE_BYTESTRING) == FALSE) {
    return wrong_type("bytes", "ay");
  }
  gsize size = 0;
  const auto* const bytes =
      static_cast<const char*>(g_variant_get_fixed_array(value, &size, sizeof(char)));
  descriptor.reset(memfd_create("item", MFD_CLOEXEC));
  const std::string_view all = size > 0 ? std::string_view(bytes, size) : std::string_view();
  if (!descriptor || !posix::write_all(descriptor.get(), all)) {
    return "the bytes cannot be held: " + posix::error_words(errno);
  }
  return std::nullopt;
}

Complaint take_descriptor(GVariant* value, GUnixFDList* descriptors, posix::UniqueFd& descriptor) {
  if (g_variant_is_of_type(value, G_VARIANT_TYPE_HANDLE) == FALSE) {
    return wrong_type("descriptor", "h");
  }
  const gint32 at = g_variant_get_handle(value);
  if (descriptors == nullptr || at < 0 || at >= g_unix_fd_list_get_length(descriptors)) {
    return "a descriptor is not there";
  }
  gio::ErrorSlot error;
  descriptor.reset(g_unix_fd_list_get(descriptors, at, error.out()));
  return descriptor ? std::nullopt : Complaint(error.message());
}

/// The type without its parameters, in small letters.
std::string plain_media_type(std::string_view type) {
  return foundation::ascii_lower_case(type.substr(0, type.find(';')));
}

Complaint take_item(GVariant* given, GUnixFDList* descriptors, share::DescriptorItem& item) {
  auto complaint = each_entry(given, [&](std::string_view key, GVariant* value) -> Complaint {
    if (key == "name") {
      return take_text(key, value, item.name);
    }
    if (key == "type") {
      return take_text(key, value, item.media_type);
    }
    if ((key == "bytes" || key == "descriptor") && item.descriptor) {
      return "an item has both \"bytes\" and \"descriptor\"";
    }
    if (key == "bytes") {
      return take_bytes(value, item.descriptor);
    }
    return key == "descriptor" ? take_descriptor(value, descriptors, item.descriptor)
                               : "\"" + std::string(key) + "\" is not known of items";
  });
  if (complaint) {
    return complaint;
  }
  item.media_type = plain_media_type(item.media_type);
  if (item.name.size() > NAME_MAX || item.media_type.size() > NAME_MAX) {
    return "a name or a type is longer than 255 bytes";
  }
  if (item.media_type.find(':') != std::string::npos) {
    return "\"" + item.media_type + "\" is no media type";
  }
  return item.descriptor ? std::nullopt
                         : Complaint("an item has neither \"bytes\" nor \"descriptor\"");
}

Complaint take_items(GVariant* value, GUnixFDList* descriptors,
                     std::vector<share::DescriptorItem>& items) {
  if (g_variant_is_of_type(value, G_VARIANT_TYPE("aa{sv}")) == FALSE) {
    return wrong_type("items", "aa{sv}");
  }
  const gsize count = g_variant_n_children(value);
  // A key may come more than once.
  if (const std::size_t all = items.size() + count; all > kMostItems) {
    return std::to_string(all) + " items, and " + std::to_string(kMostItems) + " are the most";
  }
  for (gsize at = 0; at < count; ++at) {
    const VariantHandle item(g_variant_get_child_value(value, at));
    if (auto complaint = take_item(item.get(), descriptors, items.emplace_back())) {
      return complaint;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> too_many_uris(std::size_t count) {
  if (count <= kMostUris) {
    return std::nullopt;
  }
  return std::to_string(count) + " links and files, and " + std::to_string(kMostUris) +
         " are the most";
}

std::optional<std::string> read_share_call(GVariant* parameters, GUnixFDList* descriptors,
                                           ShareCall& call) {
  share::ShareRequest& request = call.request;
  auto complaint = each_entry(parameters, [&](std::string_view key, GVariant* value) -> Complaint {
    if (key == "title") {
      return take_text(key, value, request.title);
    }
    if (key == "subject") {
      return take_text(key, value, request.envelope.subject);
    }
    if (key == "to") {
      return take_recipients(key, value, request.envelope.to);
    }
    if (key == "cc") {
      return take_recipients(key, value, request.envelope.cc);
    }
    if (key == "text") {
      return take_text(key, value, request.text);
    }
    if (key == "html") {
      return take_text(key, value, request.html);
    }
    if (key == "uris") {
      return take_uris(value, request.items);
    }
    if (key == "items") {
      return take_items(value, descriptors, request.descriptor_items);
    }
    if (key == "activation-token") {
      return take_text(key, value, call.tokens.activation);
    }
    return key == "desktop-startup-id" ? take_text(key, value, call.tokens.startup)
                                       : "\"" + std::string(key) + "\" is not known";
  });
  const bool is_empty = !request.text && !request.html && request.items.empty() &&
                        request.descriptor_items.empty();  // a title alone is no share
  if (!complaint && is_empty) {
    return "there is nothing to share";
  }
  return complaint;
}

}  // namespace quoll::share_service

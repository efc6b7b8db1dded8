#include "quoll/foundation/error.h"

#include <cerrno>
#include <system_error>

#include "quoll/foundation/path.h"

namespace quoll::foundation {

namespace {

int cocoa_code(int number, bool writing) {
  switch (number) {
    case ENOENT:
    case ENOTDIR:
      return writing ? NSFileNoSuchFileError : NSFileReadNoSuchFileError;
    case EACCES:
    case EPERM:
      return writing ? NSFileWriteNoPermissionError : NSFileReadNoPermissionError;
    case EEXIST:
    case ENOTEMPTY:
      return NSFileWriteFileExistsError;
    case ENOSPC:
    case EDQUOT:
      return NSFileWriteOutOfSpaceError;
    case EROFS:
      return NSFileWriteVolumeReadOnlyError;
    default:
      return writing ? NSFileWriteUnknownError : NSFileReadUnknownError;
  }
}

std::string sentence(int code, std::string_view path) {
  const std::string name = "“" + std::string(last_path_component(path)) + "”";
  switch (code) {
    case NSFileNoSuchFileError:
      return name + " doesn’t exist.";
    case NSFileReadNoSuchFileError:
      return "The file " + name + " couldn’t be opened because there is no such file.";
    case NSFileReadNoPermissionError:
    case NSFileWriteNoPermissionError:
      return "You don’t have permission to access " + name + ".";
    case NSFileWriteFileExistsError:
      return name + " already exists.";
    case NSFileWriteOutOfSpaceError:
      return name + " couldn’t be written because there is not enough space.";
    case NSFileWriteVolumeReadOnlyError:
      return name + " couldn’t be written because the volume is read only.";
    default:
      return "The operation on " + name + " couldn’t be completed.";
  }
}

std::string text_of(const Error::Detail& detail) {
  const auto* const error = std::get_if<std::shared_ptr<const Error>>(&detail);
  return error == nullptr ? std::get<std::string>(detail) : "{" + (*error)->description() + "}";
}

const Error::Detail* find(const Error& error, std::string_view key) {
  for (const auto& [name, value] : error.user_info) {
    if (name == key) {
      return &value;
    }
  }
  return nullptr;
}

}  // namespace

std::string Error::description() const {
  std::string out = "Error Domain=" + domain + " Code=" + std::to_string(code);
  if (!text.empty()) {
    out += " \"" + text + "\"";
  }
  if (user_info.empty()) {
    return out;
  }
  out += " UserInfo={";
  const char* separator = "";
  for (const auto& [key, value] : user_info) {
    out.append(separator).append(key).append("=").append(text_of(value));
    separator = ", ";
  }
  return out + "}";
}

const std::string* Error::detail(std::string_view key) const& {
  const Detail* const found = find(*this, key);
  return found == nullptr ? nullptr : std::get_if<std::string>(found);
}

const Error* Error::underlying() const& {
  const Detail* const found = find(*this, NSUnderlyingErrorKey);
  const auto* const error =
      found == nullptr ? nullptr : std::get_if<std::shared_ptr<const Error>>(found);
  return error == nullptr ? nullptr : error->get();
}

Error quoll_error(QuollErrorCode code, std::string_view sentence) {
  return {std::string(kQuollErrorDomain), code, std::string(sentence), {}};
}

Error quoll_error(QuollErrorCode code, Error beneath) {
  return {std::string(kQuollErrorDomain),
          code,
          "",
          {{std::string(NSUnderlyingErrorKey), std::make_shared<const Error>(std::move(beneath))}}};
}

Error posix_error(int number) {
  return {std::string(NSPOSIXErrorDomain), number, std::generic_category().message(number), {}};
}

Error file_error(int number, std::string_view path, bool writing) {
  const int code = cocoa_code(number, writing);
  return {
      std::string(NSCocoaErrorDomain),
      code,
      sentence(code, path),
      {{"NSFilePath", std::string(path)},
       {std::string(NSUnderlyingErrorKey), std::make_shared<const Error>(posix_error(number))}}};
}

}  // namespace quoll::foundation

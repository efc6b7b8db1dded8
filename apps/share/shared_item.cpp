#include "apps/share/shared_item.h"

#include <sys/stat.h>

#include <exception>

#include "quoll/platform/log.h"
#include "quoll/platform/type_identifiers.h"

namespace quoll::share {

bool SharedItem::hasItemConformingToTypeIdentifier(std::string_view type) const {
  return platform::type_conforms_to(type_, type);
}

void SharedItem::loadItemForTypeIdentifier(std::string_view /*type*/, CompletionHandler handler) {
  state_ = State::kAsked;
  answers_->async(
      [self = shared_from_this(), handler = std::move(handler)] { self->answer(handler); });
}

void SharedItem::answer(const CompletionHandler& handler) {
  state_ = State::kAnswering;
  const recording::EventRecorder::Scope scope(recorder_);
  try {
    handler(value_, std::nullopt);
  } catch (const std::exception& exception) {
    platform::log("loadItemForTypeIdentifier %@", exception);
  }
  for (const auto& file : recording::events_of_kind<recording::WrittenFile>(events())) {
    struct stat status {};  // taken now: the receiver may move the file
    if (lstat(file.path.c_str(), &status) == 0) {
      bytes_ = static_cast<std::uint64_t>(status.st_size);
    }
  }
  state_ = State::kAnswered;
}

}  // namespace quoll::share

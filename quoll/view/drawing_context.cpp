#include "quoll/view/drawing_context.h"

#include <utility>

namespace quoll::platform {

namespace {

thread_local NSGraphicsContext* current = nullptr;

}  // namespace

NSGraphicsContext* NSGraphicsContext::currentContext() {
  return current;
}

void NSGraphicsContext::flip() {
  scale(1, -1);
  flipped_ = !flipped_;
}

ScopedGraphicsContext::ScopedGraphicsContext(NSGraphicsContext& context)
    : before_(std::exchange(current, &context)) {}

ScopedGraphicsContext::~ScopedGraphicsContext() {
  current = before_;
}

}  // namespace quoll::platform

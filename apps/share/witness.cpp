#include "apps/share/witness.h"

#include <utility>

namespace quoll::share {

namespace {

thread_local Witness* of_this_thread = nullptr;

}  // namespace

Witness::Scope::Scope(Witness& witness) : before_(std::exchange(of_this_thread, &witness)) {}

Witness::Scope::~Scope() {
  of_this_thread = before_;
}

Witness* Witness::current() {
  return of_this_thread;
}

void Witness::saw(platform::LogEvent event) {
  const std::lock_guard lock(mutex_);
  logged_.push_back(std::move(event));
}

void Witness::saw_file(std::string_view path) {
  const std::lock_guard lock(mutex_);
  files_.emplace_back(path);
}

std::vector<platform::LogEvent> Witness::logged() const {
  const std::lock_guard lock(mutex_);
  return logged_;
}

std::vector<std::string> Witness::files() const {
  const std::lock_guard lock(mutex_);
  return files_;
}

}  // namespace quoll::share

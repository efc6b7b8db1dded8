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

void Witness::saw_line(std::string_view line) {
  const std::lock_guard lock(mutex_);
  lines_.emplace_back(line);
}

void Witness::saw_file(std::string_view path) {
  const std::lock_guard lock(mutex_);
  files_.emplace_back(path);
}

std::vector<std::string> Witness::lines() const {
  const std::lock_guard lock(mutex_);
  return lines_;
}

std::vector<std::string> Witness::files() const {
  const std::lock_guard lock(mutex_);
  return files_;
}

}  // namespace quoll::share

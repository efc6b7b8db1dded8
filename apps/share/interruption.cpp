#include "apps/share/interruption.h"

#include <poll.h>
#include <unistd.h>

#include <cstddef>

namespace quoll::share {

namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

volatile sig_atomic_t came = 0;
int starter_end = -1;

bool has_starter_gone() {
  pollfd other{starter_end, 0, 0};
  return starter_end >= 0 && poll(&other, 1, 0) > 0;
}

void note(int signal) {
  came = signal;
}

}  // namespace

Interruption::Interruption(int starter) {
  came = 0;
  starter_end = starter;
  struct sigaction action {};
  action.sa_handler = note;
  // No SA_RESTART: a call that waits has to return.
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (std::size_t at = 0; at < kSignals.size(); ++at) {
    sigaction(kSignals[at], nullptr, &before_[at]);
    if (before_[at].sa_handler != SIG_IGN) {
      sigaction(kSignals[at], &action, nullptr);
    }
  }
}

Interruption::~Interruption() {
  for (std::size_t at = 0; at < kSignals.size(); ++at) {
    sigaction(kSignals[at], &before_[at], nullptr);
  }
  came = 0;
  starter_end = -1;
}

bool Interruption::has_come() {
  return came != 0 || has_starter_gone();
}

bool Interruption::has_starter() {
  return starter_end >= 0;
}

void Interruption::end_program() {
  constexpr int kSignalled = 128;
  const int signal = came != 0 ? came : SIGTERM;
  ::signal(signal, SIG_DFL);
  raise(signal);
  _exit(kSignalled + signal);
}

}  // namespace quoll::share

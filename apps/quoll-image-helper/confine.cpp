#include "apps/quoll-image-helper/confine.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "linux/image_helper/answers.h"
#include "linux/image_helper/codecs/picture.h"

// The leak check of a build with the address sanitizer looks at the process's threads in /proc,
// which a helper of a confined program cannot see; it is left out there, and only there.
extern "C" int __lsan_is_turned_off();   // NOLINT(bugprone-reserved-identifier): its name
extern "C" int __lsan_is_turned_off() {  // NOLINT(bugprone-reserved-identifier)
  const int threads = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (threads >= 0) {
    close(threads);
  }
  return threads < 0 ? 1 : 0;
}

namespace quoll::image_helper {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kShadowed = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kShadowed = true;
#else
constexpr bool kShadowed = false;
#endif
#else
constexpr bool kShadowed = false;
#endif

void limit(__rlimit_resource resource, rlim_t most) {
  const rlimit both{most, most};
  setrlimit(resource, &both);
}

void end_with_parent() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // It may have ended before; then nobody reads what went wrong here.
  pollfd reason{STDERR_FILENO, 0, 0};
  if (poll(&reason, 1, 0) > 0 && (reason.revents & POLLERR) != 0) {
    std::_Exit(EXIT_FAILURE);
  }
}

}  // namespace

void confine() {
  end_with_parent();
  constexpr rlim_t kSeconds = 30;
  limit(RLIMIT_CPU, kSeconds);
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_FSIZE, kLongestResult);
  signal(SIGXFSZ, SIG_IGN);  // a result that is too long is an error of write()
  signal(SIGPIPE, SIG_IGN);
  if (!kShadowed) {
    // The held pixels, a decoder's own copy of them, and the file with what the libraries need.
    limit(RLIMIT_AS, 3 * kMostHeldBytes);
  }
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  // A filter that leaves only the calls on open descriptors and memory belongs here.
}

}  // namespace quoll::image_helper

#include <fcntl.h>
#include <linux/bpf.h>
#include <linux/io_uring.h>
#include <linux/keyctl.h>
#include <linux/perf_event.h>
#include <linux/userfaultfd.h>
#include <mqueue.h>
#include <sys/fanotify.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/personality.h>
#include <sys/shm.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "apps/image-helper/codecs/picture.h"
#include "tests/sandbox/probe_table.h"

namespace quoll::test {
namespace {

std::string other_folder() {
  return setting("QUOLL_PROBE_HOME") + "/other";
}

bool makes_a_ring() {
  io_uring_params parameters{};
  return syscall(SYS_io_uring_setup, 1, &parameters) >= 0;
}

bool loads_a_map() {
  bpf_attr attributes{};
  attributes.map_type = BPF_MAP_TYPE_ARRAY;
  attributes.key_size = 4;
  attributes.value_size = 4;
  attributes.max_entries = 1;
  return syscall(SYS_bpf, BPF_MAP_CREATE, &attributes, sizeof attributes) >= 0;
}

bool counts_events() {
  perf_event_attr attributes{};
  attributes.type = PERF_TYPE_SOFTWARE;
  attributes.config = PERF_COUNT_SW_TASK_CLOCK;
  attributes.size = sizeof attributes;
  attributes.exclude_kernel = 1;
  return syscall(SYS_perf_event_open, &attributes, 0, -1, -1, 0) >= 0;
}

/// The handle of a file, and the file by it, whatever folders are above it.
bool opens_by_handle() {
  alignas(file_handle) unsigned char room[sizeof(file_handle) + MAX_HANDLE_SZ] = {};
  auto* const handle = reinterpret_cast<file_handle*>(room);
  handle->handle_bytes = MAX_HANDLE_SZ;
  int mount = 0;
  const std::string path = setting("QUOLL_PROBE_HOME") + "/unselected";
  const std::string beside = setting("QUOLL_PROBE_HOME") + "/selected";
  const int file = open(beside.c_str(), O_RDONLY | O_CLOEXEC);
  return name_to_handle_at(AT_FDCWD, path.c_str(), handle, &mount, 0) == 0 &&
         open_by_handle_at(file, handle, O_PATH | O_CLOEXEC) >= 0;
}

bool clones_into_a_namespace() {
  const long child =
      syscall(SYS_clone, CLONE_NEWUSER | SIGCHLD, nullptr, nullptr, nullptr, nullptr);
  if (child == 0) {
    _exit(0);
  }
  return child > 0 && waitpid(static_cast<pid_t>(child), nullptr, 0) == child;
}

bool makes_memory_executable() {
  const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  void* const memory =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return memory != MAP_FAILED && mprotect(memory, size, PROT_READ | PROT_EXEC) == 0;
}

/// The x86 machines that Linux began on have calls of other numbers.
bool calls_as_another_machine() {
#ifdef __x86_64__
  constexpr long kGetPid = 20;
  long answer = kGetPid;
  asm volatile("int $0x80" : "+a"(answer) : : "memory", "r8", "r9", "r10", "r11");
  errno = answer < 0 ? static_cast<int>(-answer) : 0;
  return answer == getpid();
#else
  errno = ENOSYS;
  return false;
#endif
}

constexpr Probe kProbes[] = {
    {"make a ring of calls", makes_a_ring},
    {"load a kernel map", loads_a_map},
    {"count events", counts_events},
    {"handle page faults",
     [] { return syscall(SYS_userfaultfd, UFFD_USER_MODE_ONLY | O_CLOEXEC) >= 0; }},
    {"keep a key",
     [] { return syscall(SYS_add_key, "user", "quoll", "x", 1, KEY_SPEC_PROCESS_KEYRING) >= 0; }},
    {"ask for a keyring",
     [] { return syscall(SYS_keyctl, KEYCTL_GET_KEYRING_ID, KEY_SPEC_PROCESS_KEYRING, 1) >= 0; }},
    {"open by handle", opens_by_handle},
    {"mount",
     [] {
       const std::string folder = other_folder();
       return mount("none", folder.c_str(), "tmpfs", 0, nullptr) == 0 &&
              umount2(folder.c_str(), MNT_DETACH) == 0;
     }},
    {"change the root", [] { return chroot(other_folder().c_str()) == 0; }},
    {"leave the namespaces", [] { return unshare(CLONE_NEWUSER) == 0; }},
    {"start in a new namespace", clones_into_a_namespace},
    {"enter a namespace",
     [] {
       const int own = open("/proc/self/ns/uts", O_RDONLY | O_CLOEXEC);
       return setns(own, 0) == 0;
     }},
    {"become a user", [] { return setresuid(getuid(), getuid(), getuid()) == 0; }},
    {"become a group", [] { return setresgid(getgid(), getgid(), getgid()) == 0; }},
    {"change the personality", [] { return personality(0xffffffff) >= 0; }},
    {"watch a folder",
     [] { return inotify_add_watch(inotify_init1(IN_CLOEXEC), "/tmp", IN_CREATE) >= 0; }},
    {"watch the file system", [] { return fanotify_init(FAN_CLOEXEC, O_RDONLY) >= 0; }},
    {"share memory", [] { return shmget(IPC_PRIVATE, 4096, IPC_CREAT | 0600) >= 0; }},
    {"type into the terminal", [] { return ioctl(STDIN_FILENO, TIOCSTI, "x") == 0; }},
    {"make memory executable", makes_memory_executable},
    {"take much memory",
     [] {
       constexpr std::size_t kMuch = 3 * image_helper::kMostHeldBytes;
       return mmap(nullptr, kMuch, PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0) != MAP_FAILED;
     }},
    {"call as another machine", calls_as_another_machine},
};

}  // namespace

std::span<const Probe> kernel_probes() {
  return kProbes;
}

}  // namespace quoll::test

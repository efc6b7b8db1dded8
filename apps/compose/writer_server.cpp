#include "apps/compose/writer_server.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "apps/compose/confine_writer.h"
#include "apps/compose/write_message.h"
#include "apps/compose/writer_child.h"
#include "apps/sandbox/sanitizer_build.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/subprocess.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::compose {
namespace {

using posix::UniqueFd;

constexpr std::size_t kDescriptors = 2;

/// A message of one byte with two descriptors: the request to write a draft.
class Request {
 public:
  Request() {
    message_.msg_iov = &part_;
    message_.msg_iovlen = 1;
    message_.msg_control = space_.data();
    message_.msg_controllen = space_.size();
  }

  bool send(int socket, int taken_folder, int output) {
    cmsghdr* const header = CMSG_FIRSTHDR(&message_);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(kDescriptors * sizeof(int));
    const std::array both{taken_folder, output};
    std::memcpy(CMSG_DATA(header), both.data(), sizeof both);
    return posix::uninterrupted([&] { return sendmsg(socket, &message_, MSG_NOSIGNAL); }) == 1;
  }

  /// False when there will be none any more.
  bool receive(int socket, UniqueFd& taken_folder, UniqueFd& output) {
    if (posix::uninterrupted([&] { return recvmsg(socket, &message_, MSG_CMSG_CLOEXEC); }) != 1) {
      return false;
    }
    const cmsghdr* const header = CMSG_FIRSTHDR(&message_);
    if (header == nullptr || header->cmsg_type != SCM_RIGHTS ||
        header->cmsg_len != CMSG_LEN(kDescriptors * sizeof(int))) {
      return false;
    }
    std::array<int, kDescriptors> both{};
    std::memcpy(both.data(), CMSG_DATA(header), sizeof both);
    taken_folder.reset(both[0]);
    output.reset(both[1]);
    return true;
  }

 private:
  char byte_ = 0;
  iovec part_{&byte_, 1};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(kDescriptors * sizeof(int))> space_{};
  msghdr message_{};
};

/// What the server answers.
struct Answer {
  int error;   ///< why no process could be started, an `errno` value, or 0
  int status;  ///< how it ended, as `waitpid` has it
};

/// Closes what the receiver has open, so that nothing of it can be reached: the bus, the terminal,
/// and what it was started with. The socket gets another number.
int hold_only(int socket) {
  constexpr int kSocket = STDERR_FILENO + 1;
  {
    const UniqueFd nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
    const int last = sandbox::kSanitizerBuild ? STDOUT_FILENO : STDERR_FILENO;
    for (int stream = STDIN_FILENO; stream <= last; ++stream) {
      dup2(nothing.get(), stream);
    }
  }
  if (socket != kSocket) {
    dup2(socket, kSocket);
  }
  close_range(kSocket + 1, UINT_MAX, 0);
  return kSocket;
}

/// How a child has ended. One that stands still, on a file system that does not answer or because a
/// draft has taken it over, must not hold up the drafts of others.
int status_by(pid_t child, std::chrono::milliseconds longest) {
  const bool ends =
      posix::wait_for_end(child, std::chrono::steady_clock::now() + longest) != ETIMEDOUT;
  if (!ends) {
    kill(child, SIGKILL);
  }
  const auto status = posix::reap(child);
  return ends ? status.value_or(SIGKILL) : SIGXCPU;
}

Answer write_in_child(WriterServer::Job job, std::chrono::milliseconds longest,
                      WriterConfinement& confinement, int taken_folder, int output) {
  const pid_t server = getpid();
  const pid_t child = fork();
  if (child < 0) {
    return {.error = errno, .status = 0};
  }
  if (child == 0) {
    end_with(server);
    run_writer(job, confinement, taken_folder, output);
  }
  return {.error = 0, .status = status_by(child, longest)};
}

[[noreturn]] void serve(int receiver, WriterServer::Job job, std::chrono::milliseconds longest) {
  const int socket = hold_only(receiver);
  std::signal(SIGCHLD, SIG_DFL);
  WriterConfinement confinement;
  UniqueFd taken_folder;
  UniqueFd output;
  while (Request().receive(socket, taken_folder, output)) {
    prepare_to_write();
    const Answer answer =
        write_in_child(job, longest, confinement, taken_folder.get(), output.get());
    taken_folder.reset();
    output.reset();
    if (send(socket, &answer, sizeof answer, MSG_NOSIGNAL) != sizeof answer) {
      break;
    }
  }
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

WriterServer WriterServer::start(Job job, std::chrono::milliseconds longest) {
  std::array<int, 2> ends{-1, -1};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    return {UniqueFd(), -1, errno};
  }
  UniqueFd ours = posix::above_standard_streams(UniqueFd(ends[0]));
  UniqueFd servers = posix::above_standard_streams(UniqueFd(ends[1]));
  const pid_t receiver = getpid();
  const pid_t process = fork();
  if (process < 0) {
    return {UniqueFd(), -1, errno};
  }
  if (process == 0) {
    end_with(receiver);
    ours.reset();
    prepare_to_write();
    serve(servers.get(), job, longest);
  }
  return {std::move(ours), process, 0};
}

WriterServer::WriterServer(UniqueFd socket, pid_t process, int error)
    : socket_(std::move(socket)), process_(process), error_(error) {}

WriterServer::WriterServer(WriterServer&& other) noexcept
    : socket_(std::move(other.socket_)),
      process_(std::exchange(other.process_, -1)),
      error_(other.error_) {}

WriterServer::~WriterServer() {
  if (process_ > 0) {
    stop();
    posix::reap(process_);
  }
}

WriterAnswer WriterServer::write(int taken_folder, int output) {
  Answer answer{.error = error_, .status = 0};
  if (error_ == 0 && (!Request().send(socket_.get(), taken_folder, output) ||
                      posix::uninterrupted([&] {
                        return recv(socket_.get(), &answer, sizeof answer, 0);
                      }) != sizeof answer)) {
    return {.end = WriterEnd::kStopped, .reason = "the writing of the draft was stopped"};
  }
  if (answer.error != 0) {
    return {.end = WriterEnd::kNotNow,
            .reason = "no process can be started to write the draft: " +
                      posix::error_words(answer.error)};
  }
  return answer_of(answer.status);
}

// NOLINTNEXTLINE(readability-make-member-function-const): the server is a part of this object
void WriterServer::stop() noexcept {
  if (process_ > 0) {
    kill(process_, SIGKILL);
  }
}

}  // namespace quoll::compose

#include "tests/crash/call.h"

#include <elf.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>

#include <system_error>

namespace quoll::crash {

namespace {

void check(long answer, const char* what) {
  // A thread may be killed while it stands: then there is nothing left to change.
  if (answer < 0 && errno != ESRCH) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

std::optional<__ptrace_syscall_info> information(pid_t thread, unsigned kind) {
  __ptrace_syscall_info info{};
  if (ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof info, &info) <= 0 || info.op != kind) {
    return std::nullopt;
  }
  return info;
}

void registers(pid_t thread, bool writing, user_regs_struct& all) {
  iovec part{&all, sizeof all};
  check(ptrace(writing ? PTRACE_SETREGSET : PTRACE_GETREGSET, thread, NT_PRSTATUS, &part),
        "registers");
}

template <typename Change>
void change(pid_t thread, Change how) {
  user_regs_struct all{};
  registers(thread, false, all);
  how(all);
  registers(thread, true, all);
}

#if defined(__x86_64__)

auto& argument(user_regs_struct& all, std::size_t index) {
  decltype(all.rdi)* const places[] = {&all.rdi, &all.rsi, &all.rdx, &all.r10, &all.r8, &all.r9};
  return *places[index];
}

auto& result_of(user_regs_struct& all) {
  return all.rax;
}

void set_number(pid_t thread, long number) {
  change(thread, [&](user_regs_struct& all) {
    all.orig_rax = static_cast<decltype(all.orig_rax)>(number);
  });
}

#elif defined(__aarch64__)

auto& argument(user_regs_struct& all, std::size_t index) {
  return all.regs[index];
}

auto& result_of(user_regs_struct& all) {
  return all.regs[0];
}

void set_number(pid_t thread, long number) {
  int narrow = static_cast<int>(number);
  iovec part{&narrow, sizeof narrow};
  check(ptrace(PTRACE_SETREGSET, thread, NT_ARM_SYSTEM_CALL, &part), "number");
}

#else
#error "the registers of this machine are not known here"
#endif

}  // namespace

std::optional<Call> entered_call(pid_t thread) {
  const auto info = information(thread, PTRACE_SYSCALL_INFO_ENTRY);
  if (!info) {
    return std::nullopt;
  }
  Call call;
  call.thread = thread;
  call.number = static_cast<long>(info->entry.nr);
  for (std::size_t i = 0; i < call.arguments.size(); ++i) {
    call.arguments[i] = info->entry.args[i];
  }
  call.instruction = info->instruction_pointer;
  return call;
}

std::optional<std::int64_t> ended_call(pid_t thread) {
  const auto info = information(thread, PTRACE_SYSCALL_INFO_EXIT);
  return info ? std::optional(static_cast<std::int64_t>(info->exit.rval)) : std::nullopt;
}

void make_void(pid_t thread) {
  // Not the number -1: a filter of the process sees the changed number, and one that lists what is
  // allowed does not list that. Every program may ask where its heap ends.
  set_argument(thread, 0, 0);
  set_number(thread, SYS_brk);
}

void set_argument(pid_t thread, std::size_t index, std::uint64_t value) {
  change(thread, [&](user_regs_struct& all) { argument(all, index) = value; });
}

void set_result(pid_t thread, std::int64_t result) {
  change(thread,
         [&](user_regs_struct& all) { result_of(all) = static_cast<std::uint64_t>(result); });
}

}  // namespace quoll::crash

#include "apps/sandbox/call_filter.h"

#include <seccomp.h>

#include <array>
#include <cerrno>
#include <cstddef>

namespace quoll::sandbox {

struct CallFilter::State {
  scmp_filter_ctx context = ::seccomp_init(SCMP_ACT_ERRNO(ENOSYS));
  int failure = context != nullptr ? 0 : ENOMEM;

  /// Keeps the first failure. `answer` comes from libseccomp: 0, or an `errno` value with a minus
  /// sign.
  void note(int answer) {
    if (failure == 0) {
      failure = -answer;
    }
  }
};

CallFilter::CallFilter() : state_(std::make_unique<State>()) {
  if (state_->failure == 0) {
    // A search tree loads in half the time and takes fewer steps for each call.
    constexpr std::uint32_t kTree = 2;
    static_cast<void>(::seccomp_attr_set(state_->context, SCMP_FLTATR_CTL_OPTIMIZE, kTree));
    state_->note(
        ::seccomp_attr_set(state_->context, SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS));
    static_cast<void>(::seccomp_attr_set(state_->context, SCMP_FLTATR_API_SYSRAWRC, 1));
  }
}

CallFilter::~CallFilter() {
  if (state_->context != nullptr) {
    ::seccomp_release(state_->context);
  }
}

void CallFilter::allow(std::initializer_list<const char*> calls) {
  for (const char* const call : calls) {
    allow(call, {});
  }
}

void CallFilter::allow(const char* call, std::initializer_list<Argument> arguments) {
  const int number = ::seccomp_syscall_resolve_name(call);
  if (state_->failure != 0 || number < 0) {  // below 0: this architecture does not have the call
    return;
  }
  std::array<scmp_arg_cmp, 6> conditions{};
  std::size_t count = 0;
  for (const Argument& argument : arguments) {
    conditions.at(count++) = {argument.index, SCMP_CMP_MASKED_EQ, argument.mask, argument.value};
  }
  state_->note(::seccomp_rule_add_array(state_->context, SCMP_ACT_ALLOW, number,
                                        static_cast<unsigned>(count), conditions.data()));
}

int CallFilter::enforce() {
  if (state_->failure == 0) {
    state_->note(::seccomp_load(state_->context));
  }
  return state_->failure;
}

}  // namespace quoll::sandbox

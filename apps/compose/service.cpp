#include "apps/compose/service.h"

#include <glib-unix.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iostream>
#include <optional>
#include <utility>
#include <vector>

#include "apps/compose/compose_error.h"
#include "apps/compose/draft_thread.h"
#include "apps/compose/hand_over.h"
#include "apps/compose/notifications.h"
#include "apps/compose/taker.h"
#include "quoll/container/group_container.h"
#include "quoll/linux/gio/application_service.h"
#include "quoll/linux/gio/left_out.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/platform/log.h"

namespace quoll::compose {
namespace {

using Earlier = DraftThread::Earlier;

/// Whether the sender has put this wish into the platform data.
bool wants(GDBusMethodInvocation* call, const char* wish) {
  const gio::VariantHandle platform_data(
      g_variant_get_child_value(g_dbus_method_invocation_get_parameters(call), 1));
  gboolean wanted = FALSE;
  return g_variant_lookup(platform_data.get(), wish, "b", &wanted) != FALSE && wanted != FALSE;
}

/// Says that the drafts were taken. The error is the only answer to `Open` that can say more.
void answer(GDBusMethodInvocation* call, const std::vector<TakenDraft>& drafts) {
  const bool is_whole =
      std::ranges::all_of(drafts, [](const TakenDraft& draft) { return draft.left_out().empty(); });
  if (wants(call, is_whole ? "quoll-draft" : "quoll-report")) {
    g_dbus_method_invocation_return_dbus_error(
        call, is_whole ? gio::kTakenError : gio::kLeftOutError, report_of(drafts).c_str());
  } else {
    g_dbus_method_invocation_return_value(call, nullptr);
  }
}

int told_to_end = -1;  ///< an event; a signal can reach nothing else

/// Whatever holds up the main thread, the program ends a second later.
void end_within_a_second(int /*signal*/) {
  const int before = errno;
  alarm(1);
  (void)!eventfd_write(told_to_end, 1);
  errno = before;
}

class Service final : public gio::ApplicationService {
 public:
  using ApplicationService::ApplicationService;

  /// Runs until nobody calls, or SIGTERM ends the program.
  void run_or_end(std::chrono::milliseconds idle, WriterServer& writer) {
    told_to_end = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    g_unix_fd_add(told_to_end, G_IO_IN, stop_when_told, this);
    std::signal(SIGALRM, SIG_DFL);
    std::signal(SIGTERM, end_within_a_second);
    buttons_.emplace(bus(), kButtonTime);
    thread_.emplace(writer, has_desktop() ? Earlier::kAreGoneOnWith : Earlier::kAreLeft,
                    listener());
    run(idle);
    if (was_stopped()) {
      writer.stop();
      _exit(0);  // nothing is waited for: what was taken is on the disk
    }
  }

 private:
  void open(std::vector<std::string> urls, const gio::ActivationTokens& tokens,
            GDBusMethodInvocation* call) override {
    std::vector<TakenDraft> drafts;
    try {
      drafts = take(urls);
    } catch (const std::exception& exception) {
      platform::log("not taken: %@", exception.what());
      g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                    exception.what());
      notifications_.add(notification_of_refusal(exception.what()));  // a browser ignores the error
      return;
    }
    answer(call, drafts);
    thread_->add(std::move(drafts), tokens);
  }

  // There is no window to show. Whoever wants to know whether drafts can be kept asks by this.
  void activate(const gio::ActivationTokens& /*tokens*/, GDBusMethodInvocation* call) override {
    try {
      try_taking();
      g_dbus_method_invocation_return_value(call, nullptr);
    } catch (const ComposeError& reason) {
      g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                    reason.what());
    }
  }

  [[nodiscard]] bool busy() const override {
    return thread_->busy() || shown_ != 0 || !notifications_.empty() || !buttons_->empty();
  }

  DraftThread::Listener listener() {
    return {.finished =
                [this](const Outcome& outcome) {
                  notifications_.add(outcome);
                  if (outcome.state == Outcome::State::kStopped) {
                    end_within_a_second(0);  // another program goes on with a writer of its own
                  }
                },
            .flood_is_over = [this] { notifications_.add(notification_of_flood()); }};
  }

  static gboolean stop_when_told(int /*event*/, GIOCondition /*condition*/, gpointer self) {
    static_cast<Service*>(self)->stop();
    return G_SOURCE_REMOVE;
  }

  static gboolean show_soon(gpointer self) {
    static_cast<Service*>(self)->show_notifications();
    return G_SOURCE_REMOVE;
  }
  // On the desktop, since nobody sees this program's output. What comes before the last ones are
  // answered waits for that, so that many become few.
  void show_notifications() {
    if (shown_ != 0) {
      return;
    }
    for (const Notification& one : notifications_.take()) {
      ++shown_;
      send(*buttons_, bus(), one, [this] {
        --shown_;
        show_notifications();
      });
    }
  }

  NotificationQueue notifications_{
      [this] { g_idle_add_full(G_PRIORITY_DEFAULT, show_soon, this, nullptr); }};
  std::size_t shown_ = 0;  ///< notifications that are not answered
  std::optional<gio::NotificationButtons> buttons_;
  std::optional<DraftThread> thread_;
};

}  // namespace

int serve(const std::string& identifier, std::chrono::milliseconds idle, WriterServer& writer) {
  if (const auto path = foundation::file_system_path(ExtensionUtilities::GroupPath())) {
    posix::sweep_temporary_items(*path);  // what killed shares left
  }
  Service service(identifier);
  if (const auto failure = service.begin()) {
    std::cerr << "quoll-compose: " << *failure << '\n';
    return 1;
  }
  service.run_or_end(idle, writer);
  return 0;
}

}  // namespace quoll::compose

#include "apps/share-service/service.h"

#include <iostream>
#include <memory>
#include <utility>

#include "apps/share-service/share_call.h"
#include "apps/share-service/share_interface.h"
#include "apps/share-service/share_process.h"
#include "apps/share/identifier.h"
#include "apps/share/notice.h"
#include "quoll/linux/gio/application_service.h"
#include "quoll/linux/gio/notification.h"

namespace quoll::share_service {

namespace {

/// Shares take turns; each that waits is a process.
constexpr int kMostShares = 16;

void refuse(GDBusMethodInvocation* call, GDBusError error, const std::string& why) {
  g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, error, why.c_str());
}

/// What a share said of what went wrong, as text.
std::string words_of(const ShareEnd& end) {
  return share::shown_report(end.told, kMostTold).value_or("the system log tells more");
}

/// Cancels the share of a caller that has left the bus.
class CallerWatch {
 public:
  void start(GDBusMethodInvocation* call, std::shared_ptr<RunningShare> share) {
    share_ = std::move(share);
    watch_ = g_bus_watch_name_on_connection(
        g_dbus_method_invocation_get_connection(call), g_dbus_method_invocation_get_sender(call),
        G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr, gone, this, nullptr);
  }
  void stop() {
    if (watch_ != 0) {
      g_bus_unwatch_name(std::exchange(watch_, 0));
    }
    share_.reset();
  }

 private:
  static void gone(GDBusConnection* /*bus*/, const char* /*name*/, gpointer self) {
    static_cast<CallerWatch*>(self)->share_->cancel();
  }

  std::shared_ptr<RunningShare> share_;
  guint watch_ = 0;
};

class ShareService final : public gio::ApplicationService {
 public:
  explicit ShareService(const ShareBounds& bounds)
      : ApplicationService(share::kIdentifier, kShareInterface), bounds_(bounds) {}

 private:
  void open(std::vector<std::string> uris, const gio::ActivationTokens& tokens,
            GDBusMethodInvocation* call) override {
    if (uris.empty()) {
      return refuse(call, G_DBUS_ERROR_INVALID_ARGS, "there is nothing to share");
    }
    if (const auto complaint = too_many_uris(uris.size())) {
      return refuse(call, G_DBUS_ERROR_LIMITS_EXCEEDED, *complaint);
    }
    ShareCall share;
    share.request.items = std::move(uris);
    start_for_person(std::move(share), tokens, call);
  }

  // Started by itself, the application shares what the clipboard holds: it has no window to show.
  void activate(const gio::ActivationTokens& tokens, GDBusMethodInvocation* call) override {
    ShareCall share;
    share.clipboard = true;
    start_for_person(std::move(share), tokens, call);
  }

  void activate_action(std::string_view action, const gio::ActivationTokens& tokens,
                       GDBusMethodInvocation* call) override {
    if (action == "share-clipboard") {
      activate(tokens, call);
    } else {
      refuse(call, G_DBUS_ERROR_INVALID_ARGS, "the only action is share-clipboard");
    }
  }

  // There is one method.
  void call(std::string_view /*method*/, GVariant* parameters,
            GDBusMethodInvocation* call) override {
    if (running_ == kMostShares) {  // before anything of it is held
      return refuse_one_more(call);
    }
    const gio::VariantHandle given(g_variant_get_child_value(parameters, 0));
    GDBusMessage* const message = g_dbus_method_invocation_get_message(call);
    ShareCall share;
    if (const auto complaint =
            read_share_call(given.get(), g_dbus_message_get_unix_fd_list(message), share)) {
      return refuse(call, G_DBUS_ERROR_INVALID_ARGS, *complaint);
    }
    const auto caller = std::make_shared<CallerWatch>();
    const auto running = start(std::move(share), call, [call, caller](const ShareEnd& end) {
      caller->stop();
      g_dbus_method_invocation_return_value(
          call, g_variant_new("(us)", static_cast<guint32>(end.code), words_of(end).c_str()));
    });
    if (running) {
      caller->start(call, running);
    }
  }

  [[nodiscard]] bool busy() const override { return running_ > 0; }

  void start_for_person(ShareCall share, const gio::ActivationTokens& tokens,
                        GDBusMethodInvocation* call) {
    share.tokens = tokens;
    const std::shared_ptr<GDBusConnection> bus(
        static_cast<GDBusConnection*>(g_object_ref(g_dbus_method_invocation_get_connection(call))),
        g_object_unref);
    const auto show = [bus](const ShareEnd& end) {
      if (end.code != 0 && !end.is_cancelled) {
        std::cerr << words_of(end) << '\n';  // for the journal: a notification is soon gone
        const share::Notice notice = share::notice_of(end.code, end.told);
        gio::send_notification(bus.get(), share::kIdentifier, notice.title, notice.body);
      }
    };
    if (const auto running = start(std::move(share), call, show)) {
      running->offer_cancelling(bus.get());
      g_dbus_method_invocation_return_value(call, nullptr);
    }
  }

  static void refuse_one_more(GDBusMethodInvocation* call) {
    refuse(call, G_DBUS_ERROR_LIMITS_EXCEEDED, "too many shares are under way");
  }

  /// Null when the call was answered with an error.
  std::shared_ptr<RunningShare> start(ShareCall share, GDBusMethodInvocation* call,
                                      std::function<void(const ShareEnd&)> ended) {
    if (running_ == kMostShares) {
      refuse_one_more(call);
      return nullptr;
    }
    gio::FailureReason failure;
    auto running = start_share(
        std::move(share), bounds_,
        [this, ended = std::move(ended)](const ShareEnd& end) {
          --running_;
          ended(end);
        },
        failure);
    if (running) {
      ++running_;
    } else {
      refuse(call, G_DBUS_ERROR_FAILED, *failure);
    }
    return running;
  }

  ShareBounds bounds_;
  int running_ = 0;
};

}  // namespace

gio::FailureReason serve_shares(std::chrono::milliseconds idle, const ShareBounds& bounds) {
  ShareService service(bounds);
  if (auto failure = service.begin()) {
    return failure;
  }
  service.run(idle);
  return std::nullopt;
}

}  // namespace quoll::share_service

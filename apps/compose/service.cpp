#include "apps/compose/service.h"

#include <iostream>
#include <memory>
#include <vector>

#include "apps/compose/draft_thread.h"
#include "apps/compose/received_draft.h"
#include "quoll/container/group_container.h"
#include "quoll/linux/gio/application_service.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/platform/log.h"

namespace quoll::compose {
namespace {

class Service final : public gio::ApplicationService {
 public:
  using ApplicationService::ApplicationService;

 private:
  void open(std::vector<std::string> urls, const gio::ActivationTokens& tokens,
            GDBusMethodInvocation* call) override {
    std::vector<std::unique_ptr<ReceivedDraft>> drafts;
    try {
      for (const std::string& url : urls) {
        drafts.push_back(std::make_unique<ReceivedDraft>(url));
      }
    } catch (const std::exception& exception) {
      platform::log("not taken: %@", exception.what());
      g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                    exception.what());
      notices_.add(refusal_notice(exception.what()));  // a browser ignores the error
      return;
    }
    g_dbus_method_invocation_return_value(call, nullptr);
    for (auto& draft : drafts) {
      writer_.finish_later(std::move(draft), tokens);
    }
  }

  [[nodiscard]] bool busy() const override { return writer_.busy() || !notices_.empty(); }

  // On the desktop, since nobody sees this program's output.
  static gboolean show_notices(gpointer self) {
    static_cast<Service*>(self)->notices_.show();
    return G_SOURCE_REMOVE;
  }

  Notices notices_{[this] { g_idle_add_full(G_PRIORITY_DEFAULT, show_notices, this, nullptr); }};
  DraftThread writer_{notices_};
};

}  // namespace

int serve(const std::string& identifier, std::chrono::milliseconds idle) {
  if (const auto path = foundation::file_system_path(ExtensionUtilities::GroupPath())) {
    posix::sweep_temporary_items(*path);  // what killed shares left
  }
  Service service(identifier);
  if (const auto failure = service.begin()) {
    std::cerr << "quoll-compose: " << *failure << '\n';
    return 1;
  }
  service.run(idle);
  return 0;
}

}  // namespace quoll::compose

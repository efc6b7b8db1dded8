#include "apps/quoll-compose/service.h"

#include <iostream>
#include <memory>
#include <vector>

#include "apps/quoll-compose/draft_thread.h"
#include "apps/quoll-compose/received_draft.h"
#include "linux/gio/handles.h"
#include "linux/gio/notification.h"
#include "linux/gio/opener.h"
#include "linux/gio/session_bus.h"
#include "quoll/platform/log.h"

namespace quoll::receiver {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kInterface = R"(<node><interface name="org.freedesktop.Application">
  <method name="Activate"><arg type="a{sv}" direction="in"/></method>
  <method name="Open"><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/></method>
  <method name="ActivateAction">
    <arg type="s" direction="in"/><arg type="av" direction="in"/><arg type="a{sv}" direction="in"/>
  </method>
</interface></node>)";

gio::ActivationTokens tokens_in(GVariant* platform_data) {
  const auto text = [&](const char* key) {
    const char* value = "";
    g_variant_lookup(platform_data, key, "&s", &value);
    return std::string(value);
  };
  return {.activation = text("activation-token"), .startup = text("desktop-startup-id")};
}

class Service {
 public:
  Service(GDBusConnection* bus, std::string name)
      : bus_(bus), name_(std::move(name)), writer_([] { g_main_context_wakeup(nullptr); }) {}

  /// The object stands before anybody can call it by the name.
  bool begin(gio::ErrorSlot& error) {
    static const GDBusInterfaceVTable methods{called, nullptr, nullptr, {}};
    const gio::NodeInfoHandle node(g_dbus_node_info_new_for_xml(kInterface, nullptr));
    return g_dbus_connection_register_object(bus_, gio::object_path(name_).c_str(),
                                             node->interfaces[0], &methods, this, nullptr,
                                             error.out()) != 0 &&
           take_name(error);
  }

  /// Returns when nothing came for that long. A call that came while the name was given back lies
  /// in the queue when the bus has confirmed that: then the name is taken again.
  void run(std::chrono::milliseconds idle) {
    gio::ErrorSlot error;
    do {
      wait_until_idle(idle);
      give_name_back();
      active_ = false;
      while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
      }
    } while (active_ && take_name(error));
  }

 private:
  static void called(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                     const char* /*interface*/, const char* method, GVariant* parameters,
                     GDBusMethodInvocation* call, gpointer self) {
    auto& service = *static_cast<Service*>(self);
    service.active_ = true;
    const std::string_view name = method;
    if (name == "Open") {
      service.open(parameters, call);
    } else if (name == "Activate") {
      g_dbus_method_invocation_return_value(call, nullptr);  // there is no window to show
    } else {
      g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                                                    "there are no actions");
    }
  }

  void open(GVariant* parameters, GDBusMethodInvocation* call) {
    const gio::VariantHandle urls(g_variant_get_child_value(parameters, 0));
    const gio::VariantHandle platform_data(g_variant_get_child_value(parameters, 1));
    std::vector<std::unique_ptr<ReceivedDraft>> drafts;
    try {
      for (gsize at = 0; at < g_variant_n_children(urls.get()); ++at) {
        const gio::VariantHandle url(g_variant_get_child_value(urls.get(), at));
        drafts.push_back(std::make_unique<ReceivedDraft>(g_variant_get_string(url.get(), nullptr)));
      }
    } catch (const std::exception& exception) {
      platform::log("not taken: %@", exception.what());
      g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                    exception.what());
      return;
    }
    g_dbus_method_invocation_return_value(call, nullptr);
    for (auto& draft : drafts) {
      writer_.finish_later(std::move(draft), tokens_in(platform_data.get()));
    }
  }

  void wait_until_idle(std::chrono::milliseconds idle) {
    do {
      active_ = false;
      gio::run_main_context_until(Clock::now() + idle,
                                  [this] { return active_ || writer_.has_notices(); });
      show_notices();
    } while (active_ || writer_.busy() || writer_.has_notices());
  }

  // Nobody sees this program's standard output.
  void show_notices() {
    constexpr std::chrono::milliseconds kTimeOut{5000};
    for (const Notice& notice : writer_.take_notices()) {
      gio::show_notification(notice.summary, notice.body, kTimeOut);
    }
  }

  gio::VariantHandle ask_bus(const char* method, GVariant* parameters, gio::ErrorSlot& error) {
    return gio::VariantHandle(g_dbus_connection_call_sync(
        bus_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
        parameters, G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, error.out()));
  }

  bool take_name(gio::ErrorSlot& error) {
    constexpr guint32 kDoNotQueue = 4;
    constexpr guint32 kPrimaryOwner = 1;
    const auto reply =
        ask_bus("RequestName", g_variant_new("(su)", name_.c_str(), kDoNotQueue), error);
    guint32 answer = 0;
    if (reply) {
      g_variant_get(reply.get(), "(u)", &answer);
    }
    return answer == kPrimaryOwner;
  }

  void give_name_back() {
    gio::ErrorSlot ignored;  // without a bus nobody calls
    ask_bus("ReleaseName", g_variant_new("(s)", name_.c_str()), ignored);
  }

  GDBusConnection* bus_;
  std::string name_;
  bool active_ = false;
  DraftThread writer_;
};

int fail(const std::string& reason) {
  std::cerr << "quoll-compose: " << reason << '\n';
  return 1;
}

}  // namespace

int serve(const std::string& identifier, std::chrono::milliseconds idle) {
  if (g_dbus_is_name(identifier.c_str()) == FALSE) {
    return fail("\"" + identifier + "\" cannot be a name on the bus");
  }
  gio::ErrorSlot error;
  const gio::ObjectHandle<GDBusConnection> bus(
      g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, error.out()));
  if (!bus) {
    return fail("there is no session bus: " + error.message());
  }
  g_dbus_connection_set_exit_on_close(bus.get(), FALSE);  // drafts under way are finished
  Service service(bus.get(), identifier);
  if (!service.begin(error)) {
    return fail(error ? error.message() : "another program answers to " + identifier);
  }
  service.run(idle);
  return 0;
}

}  // namespace quoll::receiver

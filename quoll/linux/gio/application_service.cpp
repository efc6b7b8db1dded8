#include "quoll/linux/gio/application_service.h"

#include <algorithm>
#include <utility>

#include "quoll/linux/gio/opener.h"
#include "quoll/linux/gio/session_bus.h"

namespace quoll::gio {

namespace {

constexpr std::string_view kApplication = "org.freedesktop.Application";
constexpr const char* kApplicationInterface = R"(<interface name="org.freedesktop.Application">
  <method name="Activate"><arg type="a{sv}" name="platform_data" direction="in"/></method>
  <method name="Open">
    <arg type="as" name="uris" direction="in"/>
    <arg type="a{sv}" name="platform_data" direction="in"/>
  </method>
  <method name="ActivateAction">
    <arg type="s" name="action_name" direction="in"/>
    <arg type="av" name="parameter" direction="in"/>
    <arg type="a{sv}" name="platform_data" direction="in"/>
  </method>
</interface>)";

ActivationTokens tokens_in(GVariant* parameters, gsize position) {
  const VariantHandle platform_data(g_variant_get_child_value(parameters, position));
  const auto text = [&](const char* key) {
    const char* value = "";
    g_variant_lookup(platform_data.get(), key, "&s", &value);
    return std::string(value);
  };
  return {.activation = text("activation-token"), .startup = text("desktop-startup-id")};
}

}  // namespace

ApplicationService::ApplicationService(std::string identifier, const std::string& more_interfaces)
    : identifier_(std::move(identifier)) {
  const std::string node = "<node>" + (kApplicationInterface + more_interfaces) + "</node>";
  ErrorSlot error;
  interfaces_.reset(g_dbus_node_info_new_for_xml(node.c_str(), error.out()));
  if (!interfaces_) {
    g_error("%s", error.message().c_str());
  }
}

ApplicationService::~ApplicationService() {
  for (const guint object : objects_) {
    g_dbus_connection_unregister_object(bus_.get(), object);
  }
}

FailureReason ApplicationService::begin() {
  if (g_dbus_is_name(identifier_.c_str()) == FALSE) {
    return "\"" + identifier_ + "\" cannot be a name on the bus";
  }
  ErrorSlot error;
  bus_.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, error.out()));
  if (!bus_) {
    return "there is no session bus: " + error.message();
  }
  g_dbus_connection_set_exit_on_close(bus_.get(), FALSE);  // work under way is finished first
  static const GDBusInterfaceVTable methods{called, nullptr, nullptr, {}};
  // Register the objects before the name is taken: nobody may call the name and find nothing.
  for (GDBusInterfaceInfo** interface = interfaces_->interfaces; *interface != nullptr;
       ++interface) {
    const guint object =
        g_dbus_connection_register_object(bus_.get(), object_path(identifier_).c_str(), *interface,
                                          &methods, this, nullptr, error.out());
    if (object == 0) {
      return error.message();
    }
    objects_.push_back(object);
  }
  if (!take_name(error)) {
    return error ? error.message() : "another program answers to " + identifier_;
  }
  return std::nullopt;
}

void ApplicationService::run(std::chrono::milliseconds idle) {
  ErrorSlot error;
  do {
    wait_until_idle(idle);
    give_name_back();
    active_ = false;
    // The bus has confirmed the release, so every call that was made before is in the queue.
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
  } while (!stopped_ && (active_ || busy()) && take_name(error));
  if (stopped_) {
    give_name_back();   // once more: when this was answered, so is all that came before
  } else if (busy()) {  // another process has the name by now
    wait_until_idle(idle);
  }
}

void ApplicationService::activate(const ActivationTokens& /*tokens*/, GDBusMethodInvocation* call) {
  g_dbus_method_invocation_return_value(call, nullptr);
}

void ApplicationService::activate_action(std::string_view /*action*/,
                                         const ActivationTokens& /*tokens*/,
                                         GDBusMethodInvocation* call) {
  g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                                                "there are no actions");
}

void ApplicationService::call(std::string_view /*method*/, GVariant* /*parameters*/,
                              GDBusMethodInvocation* call) {
  g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD,
                                                "there is no such method");
}

void ApplicationService::called(GDBusConnection* /*bus*/, const char* /*sender*/,
                                const char* /*path*/, const char* interface, const char* method,
                                GVariant* parameters, GDBusMethodInvocation* call, gpointer self) {
  auto& service = *static_cast<ApplicationService*>(self);
  service.active_ = true;
  if (service.stopped_) {
    g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                  "the application is ending");
  } else if (interface == kApplication) {
    service.called_application(method, parameters, call);
  } else {
    service.call(method, parameters, call);
  }
}

void ApplicationService::called_application(std::string_view method, GVariant* parameters,
                                            GDBusMethodInvocation* call) {
  if (method == "Open") {
    open(texts_in(parameters, 0), tokens_in(parameters, 1), call);
  } else if (method == "Activate") {
    activate(tokens_in(parameters, 0), call);
  } else {
    const VariantHandle action(g_variant_get_child_value(parameters, 0));
    activate_action(g_variant_get_string(action.get(), nullptr), tokens_in(parameters, 2), call);
  }
}

void ApplicationService::wait_until_idle(std::chrono::milliseconds idle) {
  constexpr std::chrono::milliseconds kShortest{2};  // with less, work under way gets no time
  do {
    active_ = false;
    run_main_context_until(std::chrono::steady_clock::now() + std::max(idle, kShortest),
                           [this] { return active_ || stopped_; });
  } while (!stopped_ && (active_ || busy()));
}

VariantHandle ApplicationService::ask_bus(const char* method, GVariant* parameters,
                                          ErrorSlot& error) {
  const int patience = stopped_ ? 300 : -1;  // in milliseconds, or the bus's own
  return VariantHandle(g_dbus_connection_call_sync(
      bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
      parameters, G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, patience, nullptr, error.out()));
}

bool ApplicationService::take_name(ErrorSlot& error) {
  constexpr guint32 kDoNotQueue = 4;
  constexpr guint32 kPrimaryOwner = 1;
  const auto reply =
      ask_bus("RequestName", g_variant_new("(su)", identifier_.c_str(), kDoNotQueue), error);
  guint32 answer = 0;
  if (reply) {
    g_variant_get(reply.get(), "(u)", &answer);
  }
  return answer == kPrimaryOwner;
}

void ApplicationService::give_name_back() {
  ErrorSlot ignored;  // without a bus there are no calls
  ask_bus("ReleaseName", g_variant_new("(s)", identifier_.c_str()), ignored);
}

}  // namespace quoll::gio

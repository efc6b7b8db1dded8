#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/open_request.h"

namespace quoll::gio {

/// An application that the session bus starts when it is called. It implements
/// `org.freedesktop.Application` under its identifier, and more interfaces if it wants, and ends
/// when no call has come for a while. All calls come on the thread that called `run`. Each call
/// must be answered through its `GDBusMethodInvocation`, at once or later.
class ApplicationService {
 public:
  /// `more_interfaces` holds `<interface>` elements of D-Bus introspection data. A mistake in them
  /// ends the program.
  explicit ApplicationService(std::string identifier, const std::string& more_interfaces = "");
  ApplicationService(const ApplicationService&) = delete;
  ApplicationService& operator=(const ApplicationService&) = delete;
  virtual ~ApplicationService();

  /// Takes the name on the bus. From then on calls are answered, while `run` runs. Answers the
  /// reason when there is no bus, or when another program has the name.
  [[nodiscard]] FailureReason begin();
  /// Answers calls, and returns when none has come for `idle` and `busy` is false. No call is lost
  /// at the end.
  void run(std::chrono::milliseconds idle);
  /// Lets `run` return at once, also while `busy` is true. From now on calls are refused with an
  /// error. Call it on the thread that runs.
  void stop() { stopped_ = true; }
  [[nodiscard]] bool was_stopped() const { return stopped_; }

 protected:
  virtual void open(std::vector<std::string> uris, const ActivationTokens& tokens,
                    GDBusMethodInvocation* call) = 0;
  /// `Activate`. By default it answers that all is well: there is no window to show.
  virtual void activate(const ActivationTokens& tokens, GDBusMethodInvocation* call);
  /// `ActivateAction`. By default it answers an error: there are no actions.
  virtual void activate_action(std::string_view action, const ActivationTokens& tokens,
                               GDBusMethodInvocation* call);
  /// A method of one of the `more_interfaces`.
  virtual void call(std::string_view method, GVariant* parameters, GDBusMethodInvocation* call);
  /// True while there is work under way; `run` does not return then.
  [[nodiscard]] virtual bool busy() const = 0;
  /// The connection; null before `begin`.
  [[nodiscard]] GDBusConnection* bus() const { return bus_.get(); }

 private:
  static void called(GDBusConnection* bus, const char* sender, const char* path,
                     const char* interface, const char* method, GVariant* parameters,
                     GDBusMethodInvocation* call, gpointer self);
  void called_application(std::string_view method, GVariant* parameters,
                          GDBusMethodInvocation* call);
  void wait_until_idle(std::chrono::milliseconds idle);
  VariantHandle ask_bus(const char* method, GVariant* parameters, ErrorSlot& error);
  bool take_name(ErrorSlot& error);
  void give_name_back();

  std::string identifier_;
  NodeInfoHandle interfaces_;
  ObjectHandle<GDBusConnection> bus_;
  std::vector<guint> objects_;
  bool active_ = false;
  bool stopped_ = false;
};

}  // namespace quoll::gio

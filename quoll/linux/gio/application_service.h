#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/open_request.h"

namespace quoll::gio {

/// An application that the session bus starts when somebody calls it: it answers to its identifier
/// as `org.freedesktop.Application`, and maybe to more interfaces, until nothing came for a while.
/// All its calls come on the thread that runs it; each is to be answered through its invocation,
/// then or later.
class ApplicationService {
 public:
  /// `more_interfaces` are `<interface>` elements of introspection data; what is wrong in them ends
  /// the program.
  explicit ApplicationService(std::string identifier, const std::string& more_interfaces = "");
  ApplicationService(const ApplicationService&) = delete;
  ApplicationService& operator=(const ApplicationService&) = delete;
  virtual ~ApplicationService();

  /// Begins to answer; the reason when there is no bus or another program has the name.
  [[nodiscard]] Failure begin();
  /// Returns when nothing came for that long and there is nothing left to do. No call is lost.
  void run(std::chrono::milliseconds idle);

 protected:
  virtual void open(std::vector<std::string> uris, const ActivationTokens& tokens,
                    GDBusMethodInvocation* call) = 0;
  /// There is no window to show.
  virtual void activate(const ActivationTokens& tokens, GDBusMethodInvocation* call);
  /// There are no actions.
  virtual void activate_action(std::string_view action, const ActivationTokens& tokens,
                               GDBusMethodInvocation* call);
  /// A method of the other interfaces.
  virtual void call(std::string_view method, GVariant* parameters, GDBusMethodInvocation* call);
  /// True while something is under way.
  [[nodiscard]] virtual bool busy() const = 0;

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
};

}  // namespace quoll::gio

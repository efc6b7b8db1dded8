#pragma once

#include <fcntl.h>
#include <gio/gio.h>
#include <gio/gunixfdlist.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "quoll/linux/gio/handles.h"
#include "quoll/linux/posix/unique_fd.h"
#include "tests/integration/receiver_home.h"

namespace quoll::test {

inline constexpr const char* kName = "it.vorlent.quoll2.Quoll-Share";
inline constexpr const char* kPath = "/it/vorlent/quoll2/Quoll_Share";
inline constexpr const char* kReceiver = "it.vorlent.quoll2";

/// A request that is put together part by part.
class Request {
 public:
  Request& text(const char* key, const std::string& value) {
    return add(key, g_variant_new_string(value.c_str()));
  }
  Request& texts(const char* key, const std::vector<std::string>& all) {
    g_auto(GVariantBuilder) list = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE("as"));
    for (const auto& one : all) {
      g_variant_builder_add(&list, "s", one.c_str());
    }
    return add(key, g_variant_builder_end(&list));
  }
  Request& uris(const std::vector<std::string>& all) { return texts("uris", all); }
  Request& bytes(const std::string& name, const std::string& type, std::string_view content) {
    return item(name, type, "bytes",
                g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, content.data(), content.size(), 1));
  }
  /// Takes the descriptor.
  Request& descriptor(const std::string& name, int number) {
    const posix::UniqueFd owner(number);
    EXPECT_GE(number, 0) << name;
    return item(name, "", "descriptor",
                g_variant_new_handle(g_unix_fd_list_append(descriptors_.get(), number, nullptr)));
  }
  Request& item(const std::string& name, const std::string& type, const char* key,
                GVariant* value) {
    g_auto(GVariantBuilder) item = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE_VARDICT);
    if (!name.empty()) {
      g_variant_builder_add(&item, "{sv}", "name", g_variant_new_string(name.c_str()));
    }
    if (!type.empty()) {
      g_variant_builder_add(&item, "{sv}", "type", g_variant_new_string(type.c_str()));
    }
    g_variant_builder_add(&item, "{sv}", key, value);
    items_.push_back(g_variant_ref_sink(g_variant_builder_end(&item)));
    return *this;
  }
  Request& add(const char* key, GVariant* value) {
    entries_.emplace_back(key, gio::VariantHandle(g_variant_ref_sink(value)));
    return *this;
  }
  /// What comes after it stands under another key of the same name.
  Request& end_of_items() {
    GVariant* const list =
        g_variant_new_array(G_VARIANT_TYPE_VARDICT, items_.data(), items_.size());
    for (GVariant* item : items_) {
      g_variant_unref(item);
    }
    items_.clear();
    return add("items", list);
  }
  /// The parameters of the call; floating.
  [[nodiscard]] GVariant* parameters() {
    if (!items_.empty()) {
      end_of_items();
    }
    g_auto(GVariantBuilder) all = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE("a{sv}"));
    for (const auto& [key, value] : entries_) {
      g_variant_builder_add(&all, "{sv}", key.c_str(), value.get());
    }
    return g_variant_new("(@a{sv})", g_variant_builder_end(&all));
  }
  [[nodiscard]] GUnixFDList* descriptors() const { return descriptors_.get(); }

 private:
  std::vector<std::pair<std::string, gio::VariantHandle>> entries_;
  std::vector<GVariant*> items_;
  gio::ObjectHandle<GUnixFDList> descriptors_{g_unix_fd_list_new()};
};

struct Answer {
  int code = -1;
  std::string told;  ///< or the error
};

/// A call that was made; its answer comes later.
class Call {
 public:
  Call(GDBusConnection* bus, Request& request) {
    g_dbus_connection_call_with_unix_fd_list(bus, kName, kPath, "it.vorlent.quoll2.Share1", "Share",
                                             request.parameters(), G_VARIANT_TYPE("(us)"),
                                             G_DBUS_CALL_FLAGS_NONE, G_MAXINT,
                                             request.descriptors(), nullptr, answered, this);
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call() { wait(); }

  const Answer& wait() {
    while (!is_over_) {
      g_main_context_iteration(nullptr, TRUE);
    }
    return answer_;
  }

 private:
  static void answered(GObject* bus, GAsyncResult* result, gpointer data) {
    auto& self = *static_cast<Call*>(data);
    gio::ErrorSlot error;
    const gio::VariantHandle reply(g_dbus_connection_call_with_unix_fd_list_finish(
        G_DBUS_CONNECTION(bus), nullptr, result, error.out()));
    if (reply) {
      guint32 code = 0;
      const char* told = nullptr;
      g_variant_get(reply.get(), "(u&s)", &code, &told);
      self.answer_ = {static_cast<int>(code), told};
    } else {
      g_dbus_error_strip_remote_error(error.get());
      self.answer_ = {-1, error.message()};
    }
    self.is_over_ = true;
  }

  Answer answer_;
  bool is_over_ = false;
};

class ShareService : public testing::Test {
 protected:
  /// What the service writes on standard error goes to the file `journal` of its home, or to that
  /// of the test when none is named.
  explicit ShareService(const std::string& idle = "0.2", const std::string& journal = "") {
    const std::string command = std::string(QUOLL_SHARE_SERVICE) + " --idle " + idle;
    home_.bus.add_service(kName, journal.empty() ? command
                                                 : "/bin/sh -c 'exec " + command + " 2>" +
                                                       home_.bus.path(journal) + "'");
  }
  void install_receiver() const {
    home_.bus.add_service(kReceiver, std::string(QUOLL_COMPOSE) + " --service");
  }
  GDBusConnection* bus() {
    if (!bus_) {
      const auto flags =
          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
      bus_.reset(g_dbus_connection_new_for_address_sync(
          home_.bus.environment().at("DBUS_SESSION_BUS_ADDRESS")->c_str(), flags, nullptr, nullptr,
          nullptr));
    }
    return bus_.get();
  }
  Answer share(Request& request) { return Call(bus(), request).wait(); }
  /// The error of a call to the application; empty when it was answered.
  std::string open(const std::vector<std::string>& uris, const char* token = "") {
    g_auto(GVariantBuilder) list = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE("as"));
    for (const auto& uri : uris) {
      g_variant_builder_add(&list, "s", uri.c_str());
    }
    g_auto(GVariantBuilder) data = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&data, "{sv}", "activation-token", g_variant_new_string(token));
    gio::ErrorSlot error;
    const gio::VariantHandle reply(
        g_dbus_connection_call_sync(bus(), kName, kPath, "org.freedesktop.Application", "Open",
                                    g_variant_new("(asa{sv})", &list, &data), nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, error.out()));
    if (error) {
      g_dbus_error_strip_remote_error(error.get());
    }
    return error.message();
  }
  /// Waits for so many drafts and answers what an independent reader finds in them.
  std::string drafts(std::size_t count) const {
    while (home_.drafts().size() < count) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    home_.wait_for_drafts();
    std::string all;
    for (const auto& draft : home_.drafts()) {
      all += ReceiverHome::read_message(draft);
    }
    EXPECT_EQ(home_.drafts().size(), count);
    return all;
  }
  bool is_nothing_prepared() const {
    std::error_code missing;
    const std::string incoming = home_.bus.path("containers/K7Q2M9XT4B.quoll/.incoming");
    return !std::filesystem::exists(incoming, missing) || std::filesystem::is_empty(incoming);
  }
  /// As long as it is held, every share waits.
  [[nodiscard]] posix::UniqueFd held_staging_lock() const {
    const std::string locks = home_.bus.path("containers/K7Q2M9XT4B.quoll/.locks");
    std::filesystem::create_directories(locks);
    posix::UniqueFd lock(open_file(locks + "/turn", O_RDWR | O_CREAT));
    EXPECT_EQ(flock(lock.get(), LOCK_EX), 0);
    return lock;
  }
  /// The process of the service, which the bus has started.
  pid_t service() {
    gio::ErrorSlot error;
    const gio::VariantHandle reply(g_dbus_connection_call_sync(
        bus(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "GetConnectionUnixProcessID", g_variant_new("(s)", kName), G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, error.out()));
    guint32 id = 0;
    if (reply) {
      g_variant_get(reply.get(), "(u)", &id);
    }
    EXPECT_NE(id, 0U) << error.message();
    return static_cast<pid_t>(id);
  }
  /// The processes that a process has started.
  static std::vector<pid_t> children_of(pid_t process) {
    const std::string id = std::to_string(process);
    std::ifstream children("/proc/" + id + "/task/" + id + "/children");
    return {std::istream_iterator<pid_t>(children), std::istream_iterator<pid_t>()};
  }
  /// True when a process has a file open whose path ends so.
  static bool has_open(pid_t process, const std::string& end) {
    std::error_code gone;
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(process) + "/fd",
                                                    gone);
    return std::any_of(begin(files), std::filesystem::directory_iterator(), [&](const auto& file) {
      return std::filesystem::read_symlink(file, gone).string().ends_with(end);
    });
  }
  static int open_file(const std::string& path, int flags) {
    return ::open(path.c_str(), flags | O_CLOEXEC, 0600);
  }
  std::string write(const std::string& name, const std::string& content) const {
    std::ofstream(home_.bus.path(name)) << content;
    return home_.bus.path(name);
  }

  ReceiverHome home_;
  gio::ObjectHandle<GDBusConnection> bus_;
};

}  // namespace quoll::test

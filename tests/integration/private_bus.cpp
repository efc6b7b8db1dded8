#include "tests/integration/private_bus.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace quoll::test {
namespace {

/// Where other programs look for service files too.
constexpr const char* kServices = "system-data/dbus-1/services";

void write(const std::string& path, const std::string& content) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

}  // namespace

PrivateBus::PrivateBus(const Environment& more, std::chrono::milliseconds start_limit)
    : environment_{{"HOME", folder_.path("home")},
                   {"XDG_DATA_HOME", folder_.path("data")},
                   {"XDG_CONFIG_HOME", folder_.path("config")},
                   {"XDG_DATA_DIRS", folder_.path("system-data")},
                   {"XDG_CURRENT_DESKTOP", std::nullopt},
                   {"QUOLL_GROUP_CONTAINERS", folder_.path("containers")},
                   {"QUOLL_BUNDLE_IDENTIFIER", std::nullopt},
                   {"DISPLAY", std::nullopt},
                   {"WAYLAND_DISPLAY", std::nullopt},
                   {"XDG_ACTIVATION_TOKEN", std::nullopt},
                   {"DESKTOP_STARTUP_ID", std::nullopt}} {
  for (const auto& [name, value] : more) {
    environment_[name] = value;
  }
  for (const char* folder : {"home", "data", "config", "containers", kServices}) {
    std::filesystem::create_directories(folder_.path(folder));
  }
  // Of the system's data only the file types: an application installed here is not in this home.
  std::filesystem::create_directory_symlink("/usr/share/mime", folder_.path("system-data/mime"));
  // The limits are those of a desktop's session bus.
  folder_.write("bus.conf", R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=)" + folder_.path() +
                                R"(</listen>
  <servicedir>)" + folder_.path(kServices) +
                                R"(</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="service_start_timeout">)" +
                                std::to_string(start_limit.count()) +
                                R"(</limit>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <limit name="max_message_size">1000000000</limit>
</busconfig>
)");
  daemon_ = std::make_unique<Process>(
      std::vector<std::string>{"dbus-daemon", "--config-file=" + folder_.path("bus.conf"),
                               "--nofork", "--nopidfile", "--print-address"},
      environment_);
  environment_["DBUS_SESSION_BUS_ADDRESS"] = daemon_->read_line();
}

std::string PrivateBus::socket() const {
  constexpr std::string_view kHead = "unix:path=";
  const std::string address = environment_.at("DBUS_SESSION_BUS_ADDRESS").value_or("");
  if (!address.starts_with(kHead)) {
    throw std::runtime_error("the bus has no socket with a path: " + address);
  }
  return address.substr(kHead.size(), address.find(',') - kHead.size());
}

void PrivateBus::add_service(const std::string& name, const std::string& command) const {
  write(folder_.path(std::string(kServices) + "/" + name + ".service"),
        "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
  // The bus notices new files by itself, but nobody says when.
  static_cast<void>(run({"dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                         "/org/freedesktop/DBus", "org.freedesktop.DBus.ReloadConfig"},
                        environment_));
}

void PrivateBus::add_entry(const std::string& name, const std::string& content) const {
  write(folder_.path("data/applications/" + name + ".desktop"), content);
}

}  // namespace quoll::test
